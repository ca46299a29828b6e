#include "send/send_options.h"

namespace quarn::send {

const char kUsage[] =
    "usage: quarn-send [OPTION...] [--] COMMAND...\n"
    "Sends each COMMAND to a serial port, waits for its response and prints both.\n"
    "commands  --file FILE    from FILE, one per line   -  from standard input\n"
    "          --escapes      \\r \\n \\t \\0 \\x02 \\\\ in commands stand for bytes\n"
    "          --             all following words are commands, even if they begin with -\n"
    "port      --port NAME    COM4, /dev/ttyUSB0, /dev/serial/by-id/...\n"
    "line      --bps N  --data-bits 5|6|7|8  --parity none|odd|even  --stop-bits 1|1.5|2\n"
    "          --delimiter CR|LF|CRLF|STX_ETX  --buffer 1K|2K|6K  --speed HIGH|LOW\n"
    "          --timeout SECONDS\n"
    "          --settings FILE  settings from FILE   --defaults  no settings file\n"
    "output    --raw  only the response, byte for byte\n"
    "          --help  --version\n"
    "\n"
    "exit status of the last command:\n"
    "  0 response received    1 response time-out    2 empty response\n"
    "  3 response truncated   4 aborted (Ctrl+C)\n"
    "  5 the port, the settings or a file could not be opened, or the line failed\n"
    "  64 wrong usage, or a command that cannot be sent\n"
    "  74 standard output could not be written\n";

}  // namespace quarn::send
