#include "api/connection.h"
#include "script/script.h"
#include "vek.h"

int vekRunScript(const char* name)
{
    if (vek::openPath == nullptr) {
        return VEK_NO_PATH;
    }
    if (vek::openPath->registers == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    return vek::runScript(name, *vek::openPath->registers);
}
