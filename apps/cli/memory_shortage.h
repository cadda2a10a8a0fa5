#pragma once

namespace wxl::cli {

/// Watches whether this process runs out of memory: what then fails, in the program or in a library, ends it with exit
/// code 1 and a sentence on standard error, and never by a signal. For a process that runs one command.
void watch_memory();

/// The exit code of a command that ended with `code`. Where memory ran out it tells so, and ends the process here: what
/// libraries left half-made then may wait for itself when it is taken down. A command that came to its end all the same
/// has failed: nobody knows what a library left out.
int exit_code_after(int code);

}  // namespace wxl::cli
