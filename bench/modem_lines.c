/* Loaded before a program that closes a line which does not know the question for the modem lines: a
   pseudo-terminal. It gets the answer that such a line gave on older systems. Not part of Quarn. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdarg.h>
#include <sys/ioctl.h>

int ioctl(int line, unsigned long request, ...) {
  int (*next)(int, unsigned long, ...) = (int (*)(int, unsigned long, ...))dlsym(RTLD_NEXT, "ioctl");
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  const int result = next(line, request, argument);
  if (result < 0 && request == TIOCMGET && errno == ENOTTY) errno = EINVAL;
  return result;
}
