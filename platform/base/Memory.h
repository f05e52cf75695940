// What happens when memory runs out where no exception helps.
#pragma once

namespace platform {

/// Whether the process can get only little more memory (less than half a GiB of address space), which tells a
/// lack of memory from a file that asks for more than there could ever be.
bool memoryIsShort();

/// Says that memory has run out. Any thread, called once; may throw.
using LastWords = void (*)();

/// From now on a lack of memory or threads that nobody can catch (on a thread, while another exception is
/// under way, within GLib or a driver, which would crash) is told by `say` and ends the process with the exit
/// code of a passing fault. Some memory is put aside for the telling; if it is not enough, a plain line on
/// standard error has to do.
void endOrderlyWithoutMemory(LastWords say);

/// From now on such an end is silent: another process sees the exit code and tells it.
void leaveLastWordsToOthers();

}  // namespace platform
