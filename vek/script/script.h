#ifndef VEK_SCRIPT_SCRIPT_H
#define VEK_SCRIPT_SCRIPT_H

#include "address_space.h"

namespace vek
{

/// Results of a script. The console takes -1, -3 and positive numbers of it for messages and actions of its own.
enum ScriptResult {
    kScriptDone = 0,
    kScriptInvalid = -2,  ///< No such script, or a line that cannot be understood; nothing has been run.
    kScriptFailed = -5,   ///< An access got no answer or a check did not hold; the script ended there.
};

/// Runs the script file `name`, which may be null, over a register region. The file is checked as a whole before its
/// first line runs. Reads print on standard output; what goes wrong is told in one line on standard error.
ScriptResult runScript(const char* name, AddressSpace& registers);

}  // namespace vek

#endif
