// Every console excerpt of the handbook and of README.md is what the programs print, and the pictures show it.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "child_process.h"
#include "played_page.h"

namespace
{

const std::filesystem::path kSources = TOVIRA_SOURCE_FOLDER;
const std::string kPrograms = TOVIRA_PROGRAM_FOLDER;

std::string contents(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream) << path;
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::filesystem::path> pagesIn(const std::string& folder)
{
    std::vector<std::filesystem::path> pages;
    for (const auto& entry : std::filesystem::directory_iterator(kSources / folder)) {
        if (entry.path().extension() == ".md") {
            pages.push_back(entry.path().lexically_relative(kSources));
        }
    }
    std::sort(pages.begin(), pages.end());
    return pages;
}

class Page : public ::testing::TestWithParam<std::filesystem::path>
{
};

TEST_P(Page, ShowsWhatTheProgramsPrint)
{
    const std::string page = contents(kSources / GetParam());
    EXPECT_EQ(handbook::playedPage(page, kPrograms), page) << "scripts/update_handbook writes what they print now";
}

TEST_P(Page, LinksToFilesThatExist)
{
    const std::string page = contents(kSources / GetParam());
    const std::regex link(R"(\]\(([^)#:]+)(#[^)]*)?\))");
    for (std::sregex_iterator match(page.begin(), page.end(), link), end; match != end; ++match) {
        EXPECT_TRUE(std::filesystem::exists(kSources / GetParam().parent_path() / (*match)[1].str()))
            << (*match)[1].str();
    }
}

std::string nameOf(const ::testing::TestParamInfo<std::filesystem::path>& info)
{
    std::string name = info.param.stem();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Handbook, Page, ::testing::ValuesIn(pagesIn("docs/handbook")), nameOf);
INSTANTIATE_TEST_SUITE_P(Reference, Page, ::testing::ValuesIn(pagesIn("docs")), nameOf);
INSTANTIATE_TEST_SUITE_P(Project, Page,
                         ::testing::Values("README.md", "CONTRIBUTING.md", "ARCHITECTURE.md", "CHANGELOG.md"), nameOf);

/** The words of the commands that a page types. */
std::vector<std::string> typedWords(const std::string& page)
{
    std::vector<std::string> words;
    const std::regex word(R"((?:^|;)\s*([a-z0-9?]+))");
    for (const std::string& line : handbook::excerptLines(page)) {
        std::smatch option;
        const bool hasOption =
            std::regex_search(line, option, std::regex(R"(^\$ tovira_util_tool .*--cmd "?([^"|<]*))"));
        const std::string text = line.starts_with(">") ? line.substr(1) : hasOption ? option[1].str() : "";
        for (std::sregex_iterator match(text.begin(), text.end(), word), end; match != end; ++match) {
            words.push_back((*match)[1]);
        }
    }
    return words;
}

// Memory commands differ in their last letters only: those of a family are told by their first two.
std::string familyOf(const std::string& word)
{
    const std::regex memory("([rvkac][rw])[bwlq]s?");
    std::smatch match;
    return std::regex_match(word, match, memory) ? match[1].str() : word;
}

TEST(Tour, UsesEveryFamilyOfCommands)
{
    const std::vector<std::string> words = typedWords(contents(kSources / "docs/handbook/tour.md"));
    std::vector<std::string> used;
    std::transform(words.begin(), words.end(), std::back_inserter(used), familyOf);
    const child_process::Result help =
        child_process::run({.arguments = {kPrograms + "/tovira_util_tool", "--cmd", "help"}});
    // The list of help leaves these out.
    std::istringstream lines(help.output + "query\t- \nspi\t- \nvlot\t- \nclk\t- \n");
    std::size_t commands = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t end = line.find_first_of("/\t");
        if (line.find("\t- ") != std::string::npos && end != std::string::npos) {
            ++commands;
            EXPECT_NE(std::find(used.begin(), used.end(), familyOf(line.substr(0, end))), used.end()) << line;
        }
    }
    EXPECT_GE(commands, 102U);
}

// The script that CONTRIBUTING.md sends people to.
TEST(TestOf, FindsTheTestsOfEveryCommand)
{
    const child_process::Result list = child_process::run({.arguments = {kSources / "scripts/test_of", "--list"}});
    EXPECT_EQ(list.exitStatus, 0) << list.error;
    const std::regex row("[a-z0-9/?]+:( tests/[a-z_]+/[a-z0-9_]+_test\\.cpp)+");
    std::istringstream rows(list.output);
    std::size_t count = 0;
    for (std::string line; std::getline(rows, line); ++count) {
        EXPECT_TRUE(std::regex_match(line, row)) << line;
    }
    EXPECT_GE(count, 102U);
}

TEST(TestOf, KnowsACommandByItsAliasesInAnyCase)
{
    const child_process::Result list =
        child_process::run({.arguments = {kSources / "scripts/test_of", "--list", "VER"}});
    EXPECT_EQ(list.exitStatus, 0) << list.error;
    EXPECT_EQ(list.output, "tests/info/version_and_info_test.cpp\n");
}

TEST(TestOf, RefusesWhatIsNoCommand)
{
    const child_process::Result result =
        child_process::run({.arguments = {kSources / "scripts/test_of", "--list", "nonsense"}});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
}

TEST(SessionPicture, ShowsWhatTheProgramPrints)
{
    const std::string page = contents(kSources / "docs/images/session.md");
    const std::string played = handbook::playedPage(page, kPrograms);
    EXPECT_EQ(played, page);
    EXPECT_EQ(handbook::terminalPicture(handbook::excerptLines(played), "A session with tovira_util_tool"),
              contents(kSources / "docs/images/session.svg"));
}

}  // namespace
