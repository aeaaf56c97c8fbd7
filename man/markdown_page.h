/// Markdown documents as the body of man pages.
#ifndef MAN_MARKDOWN_PAGE_H
#define MAN_MARKDOWN_PAGE_H

#include <string>
#include <string_view>

/// The document without its title, in man macros: sections, paragraphs, lists of one level, tables (for tbl) and
/// literal blocks, either indented by four blanks or between fences. The text before the first section is for one that
/// the page has begun.
std::string manFromMarkdown(std::string_view markdown);

#endif
