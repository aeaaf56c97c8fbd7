/// Text for groff's man macros.
#ifndef MAN_ROFF_H
#define MAN_ROFF_H

#include <string>
#include <string_view>

/// The text as it stands, in one line of roff or in a part of one: nothing in it is a request or an escape, and what is
/// not ASCII (the text is UTF-8) goes by its code point. Hyphens become minus signs, which can be copied to a shell.
std::string roffText(std::string_view text);

/// The same for the lines of a text that are kept as they are, each at its own tabs; ends with a line end.
std::string roffLines(std::string_view text);

/// Markdown's marks inside a line: `literal` and **strong** in bold, *emphasis* in italics, [text](place) as its text.
std::string roffInline(std::string_view markdown);

/// The page without the requests for a paragraph that stand where one begins anyway, or where none follows.
std::string withoutEmptyParagraphs(std::string_view page);

#endif
