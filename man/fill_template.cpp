// Fills a template from the command table, the library's header and the documents: man pages and completions say
// nothing twice that stands there.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

#include "command_texts.h"
#include "library_header.h"
#include "markdown_page.h"

namespace
{

constexpr char kMark = '@';

/// The manual page that a document of docs/ has become.
struct DocumentPage {
    std::string_view document;
    std::string_view page;
    std::string_view section;
};

constexpr std::array<DocumentPage, 6> kDocumentPages{{{"card-description.md", "vek_description", "(5)"},
                                                      {"environment.md", "tovira_util_tool", "(1)"},
                                                      {"file-formats.md", "vek_files", "(5)"},
                                                      {"script-format.md", "vek_script", "(5)"},
                                                      {"serial-protocol.md", "vek_serial", "(5)"},
                                                      {"state-folder.md", "vek_state", "(5)"}}};

struct Project {
    std::string folder;
    std::string version;
    std::string date;
};

[[noreturn]] void fail(const std::string& what)
{
    std::cerr << "fill_template: " << what << '\n';
    std::exit(EXIT_FAILURE);
}

std::string readFile(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    if (!file) {
        fail(name + ": cannot be read");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

void replaceAll(std::string& text, const std::string& old, const std::string& replacement)
{
    for (std::size_t found = 0; (found = text.find(old, found)) != std::string::npos; found += replacement.size()) {
        text.replace(found, old.size(), replacement);
    }
}

/// The text with manual pages in the places of the documents that it names: by their links in Markdown, by their paths
/// in a comment.
std::string namingPages(std::string text)
{
    for (const auto& [document, page, section] : kDocumentPages) {
        std::string link("[");
        link.append(document).append("](").append(document).append(")");
        replaceAll(text, link, std::string("`").append(page).append("`").append(section));
        replaceAll(text, std::string("docs/").append(document), std::string(page).append(section));
    }
    return text;
}

/// What stands for a place of the template; of the documents, those that are named.
std::string filling(const std::string& place, const Project& project)
{
    constexpr std::string_view kMarkdown = "markdown ";
    if (place == "version") {
        return project.version;
    }
    if (place == "date") {
        return project.date;
    }
    if (place == "command-reference") {
        return manOfCommands();
    }
    if (place == "command-names") {
        return commandNames();
    }
    if (place == "zsh-command-descriptions") {
        return zshCommandDescriptions();
    }
    if (place.starts_with(kMarkdown)) {
        return manFromMarkdown(namingPages(readFile(project.folder + '/' + place.substr(kMarkdown.size()))));
    }
    const std::string header = namingPages(readFile(project.folder + "/include/vek.h"));
    if (place == "library-conventions") {
        return manOfConventions(header);
    }
    if (place == "library-types") {
        return manOfTypes(header);
    }
    if (place == "library-functions") {
        return manOfFunctions(header);
    }
    if (place == "library-interface-printers") {
        return printersOfInterface(header);
    }
    fail("nothing is known of @" + place + '@');
}

bool isPlace(std::string_view text)
{
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz-./ ";
    return !text.empty() && text.find_first_not_of(kLetters) == std::string_view::npos;
}

std::string filled(std::string_view text, const Project& project)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t begin = text.find(kMark);
        const std::size_t end = begin == std::string_view::npos ? begin : text.find(kMark, begin + 1);
        if (end == std::string_view::npos) {
            return result.append(text);
        }
        const std::string_view place = text.substr(begin + 1, end - begin - 1);
        if (isPlace(place)) {
            result += text.substr(0, begin);
            const std::string content = filling(std::string(place), project);
            // A place that has a line of its own is all of that line.
            const bool ownLine = content.ends_with('\n') && text.substr(end + 1).starts_with('\n');
            result += ownLine ? content.substr(0, content.size() - 1) : content;
            text.remove_prefix(end + 1);
        } else {
            result += text.substr(0, end);
            text.remove_prefix(end);
        }
    }
    return result;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 6) {
        fail("usage: fill_template PROJECT-FOLDER VERSION DATE TEMPLATE OUTPUT");
    }
    const Project project{argv[1], argv[2], argv[3]};
    const std::string output = argv[5];
    std::ofstream file(output, std::ios::binary);
    file << filled(readFile(argv[4]), project);
    file.close();
    if (!file) {
        fail(output + ": cannot be written");
    }
    return EXIT_SUCCESS;
}
