#!/usr/bin/env python3
"""The tests on the machine's serial drivers. Runs in the machine that outside.py starts."""

from bench import options, outside, run_tests

import adapters

adapters.keep_disk()
if options["boot"] == 1:
    import first_command  # noqa: F401
    import cases  # noqa: F401
    import line_state  # noqa: F401
    import modem_lines  # noqa: F401
    import breaks  # noqa: F401
    import in_window  # noqa: F401
    import closing  # noqa: F401
    import pulling  # noqa: F401
    import pulling_windows  # noqa: F401
    import modem_manager  # noqa: F401
    import no_parent  # noqa: F401
    import batches  # noqa: F401
    import pins  # noqa: F401
    import port_list  # noqa: F401

    run_tests()
    if adapters.is_for_next_run():
        outside.again()
else:
    import pins_again  # noqa: F401

    run_tests()
outside.done()
