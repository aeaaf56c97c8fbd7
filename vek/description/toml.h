#ifndef VEK_DESCRIPTION_TOML_H
#define VEK_DESCRIPTION_TOML_H

// Mistakes come back as values. A description nests a few levels deep; one that is made to nest without end must not
// use up the stack.
#define TOML_EXCEPTIONS 0
#define TOML_MAX_NESTED_VALUES 16
#define TOML_ENABLE_FORMATTERS 0

#include <toml++/toml.h>

#endif
