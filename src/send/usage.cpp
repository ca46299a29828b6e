#include "send/send_options.h"

namespace quarn::send {

const char kUsage[] =
    "usage: quarn-send [OPTION...] [--] COMMAND...\n"
    "Sends each COMMAND to a serial port, waits for its response and prints both.\n"
    "commands  --file FILE   from FILE, one per line; - for standard input\n"
    "          --escapes     \\r \\n \\t \\0 \\e \\\\ and \\x02 in commands stand for bytes\n"
    "          --            all following words are commands\n"
    "port      --port NAME   COM4, /dev/ttyUSB0, ...      --list [--json]  the ports\n"
    "          --wait SECONDS  while it is in use      --dtr, --rts  on|off|keep\n"
    "line      --bps N  --data-bits 5|6|7|8  --parity none|odd|even\n"
    "          --stop-bits 1|1.5|2  --delimiter CR|LF|CRLF|STX_ETX\n"
    "          --buffer 1K|2K|6K  --speed HIGH|LOW\n"
    "settings  --settings FILE  from FILE              --defaults  the built-in ones\n"
    "output    --raw  response bytes   --json, --csv  for machines   --timestamps\n"
    "results   --timeout SECONDS  --expect REGEX  --retry N  --stop-on-error\n"
    "rounds    --every SECONDS  --count N\n"
    "unasked   --listen [SECONDS]  prints what arrives, until Ctrl+C\n"
    "          --help  --version\n"
    "exit status of the last command, or with --stop-on-error of the first failure:\n"
    "  0 response received    1 response time-out   2 empty response\n"
    "  3 response truncated   4 aborted (Ctrl+C)    6 response not as expected\n"
    "  5 the port, the settings or a file could not be opened, or the line failed\n"
    "  64 wrong usage, or a command that cannot be sent\n"
    "  74 standard output could not be written\n";

}  // namespace quarn::send
