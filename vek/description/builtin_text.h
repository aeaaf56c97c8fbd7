#ifndef VEK_DESCRIPTION_BUILTIN_TEXT_H
#define VEK_DESCRIPTION_BUILTIN_TEXT_H

namespace vek
{

/// builtin_cards.toml, the description of the built-in cards.
extern const char kBuiltinDescription[];

}  // namespace vek

#endif
