// Rules that every source file of the product keeps.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "child_process.h"
#include "scratch.h"

namespace
{

/** The sources of what is installed, by their paths in the project, that hold a match of an extended regular
    expression. */
std::vector<std::string> filesWith(const std::string& expression)
{
    const child_process::Result found =
        child_process::run({.arguments = {"grep", "-rlE", "--include=*.cpp", "--include=*.h", expression, "common",
                                          "include", "src", "vek"},
                            .folder = TOVIRA_SOURCE_FOLDER});
    EXPECT_LE(found.exitStatus, 1) << found.error;
    std::istringstream lines(found.output);
    std::vector<std::string> names;
    for (std::string line; std::getline(lines, line);) {
        names.push_back(line);
    }
    return names;
}

TEST(Sources, AskTheEnvironmentInTheWayThatRaisedRightsSilence)
{
    EXPECT_THAT(filesWith(R"(\bgetenv\s*\(|\benviron\b)"), testing::IsEmpty());
    EXPECT_THAT(filesWith(R"(\bsecure_getenv\s*\()"), testing::Not(testing::IsEmpty()));
}

// Elsewhere a name could lead through a stranger's link.
TEST(Sources, CreateFilesInFewPlaces)
{
    for (const std::string& name : filesWith(R"(\bO_CREAT\b|\bcreat\s*\(|\bfopen\s*\(|\bfreopen\s*\(|std::ofstream)")) {
        const std::string text = Scratch::contents(TOVIRA_SOURCE_FOLDER "/" + name);
        EXPECT_TRUE(text.find("guarded::open(") != std::string::npos || text.find("O_NOFOLLOW") != std::string::npos ||
                    name == "common/guarded_open.h" || name == "common/guarded_open.cpp")
            << name;
    }
}

}  // namespace
