#ifndef VEK_DESCRIPTION_LOAD_READER_H
#define VEK_DESCRIPTION_LOAD_READER_H

#include "description/reader.h"

namespace vek
{

/// Loads the reader of descriptions, once. It is looked for beside the library or program that this is part of and
/// nowhere else: no search path may choose what a privileged program loads. Null when it cannot be had, with a line on
/// standard error.
ReadCardDescription* loadDescriptionReader();

}  // namespace vek

#endif
