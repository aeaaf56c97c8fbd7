// What the files themselves must be: which libraries the program asks for, and whose code is in it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "program_support.h"

namespace program_test
{
namespace
{

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

std::string outputOf(const Arguments& command)
{
    const child_process::Result result = child_process::run({.arguments = command});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    return result.output;
}

/** The values of the entries of a kind, such as NEEDED, in a file's dynamic section. */
std::vector<std::string> dynamicEntries(const std::string& file, const std::string& kind)
{
    std::istringstream section(outputOf({"readelf", "--dynamic", "--wide", file}));
    std::vector<std::string> values;
    for (std::string line; std::getline(section, line);) {
        const std::size_t begin = line.find('[');
        const std::size_t end = line.rfind(']');
        if (line.find("(" + kind + ")") != std::string::npos && begin < end && end != std::string::npos) {
            values.push_back(line.substr(begin + 1, end - begin - 1));
        }
    }
    return values;
}

/** The names of the symbols that nm lists. */
std::set<std::string> symbols(Arguments command)
{
    command.insert(command.begin(), {"nm", "--format=posix"});
    std::set<std::string> names;
    std::istringstream lines(outputOf(command));
    for (std::string line; std::getline(lines, line);) {
        // The names that a library exports may carry a version.
        names.insert(line.substr(0, line.find_first_of(" @")));
    }
    return names;
}

std::set<std::string> common(const std::set<std::string>& one, const std::set<std::string>& other)
{
    std::set<std::string> both;
    std::set_intersection(one.begin(), one.end(), other.begin(), other.end(), std::inserter(both, both.begin()));
    return both;
}

/** The functions that our library gives to its callers. */
std::set<std::string> libraryFunctions()
{
    std::set<std::string> names = symbols({"--dynamic", "--defined-only", TOVIRA_LIBRARY});
    std::erase_if(names, [](const std::string& name) { return name.starts_with('_'); });
    return names;
}

TEST(Binary, ProgramNeedsTheLibraryAndTheCLibraryOnly)
{
    const std::vector<std::string> needed = dynamicEntries(programPath(), "NEEDED");
    if (TOVIRA_INSTRUMENTED) {
        EXPECT_THAT(needed, Contains("libutil_vek.so"));
    } else {
        EXPECT_THAT(needed, UnorderedElementsAre("libutil_vek.so", "libc.so.6"));
    }
}

TEST(Binary, ProgramFindsTheLibraryBesideItUnlessAnotherIsPutInItsPlace)
{
    EXPECT_THAT(dynamicEntries(programPath(), "RUNPATH"), ElementsAre(MatchesRegex("[$]ORIGIN/+")));
    EXPECT_THAT(dynamicEntries(programPath(), "RPATH"), IsEmpty());
}

TEST(Binary, LibraryIsFoundByItsName)
{
    EXPECT_THAT(dynamicEntries(TOVIRA_LIBRARY, "SONAME"), ElementsAre("libutil_vek.so"));
    EXPECT_THAT(dynamicEntries(TOVIRA_FOREIGN_LIBRARY_FOLDER "/libutil_vek.so", "SONAME"),
                ElementsAre("libutil_vek.so"));
}

TEST(Binary, LibraryNeedsNoDynamicCxxRuntime)
{
    if (!TOVIRA_INSTRUMENTED) {
        const std::vector<std::string> needed = dynamicEntries(TOVIRA_LIBRARY, "NEEDED");
        EXPECT_THAT(needed, Not(Contains(HasSubstr("stdc++"))));
        EXPECT_THAT(needed, Not(Contains(HasSubstr("gcc"))));
    }
}

TEST(Binary, ProgramImportsEveryLibraryFunction)
{
    const std::set<std::string> library = libraryFunctions();
    ASSERT_THAT(library, Contains("vekRwOpen"));
    EXPECT_THAT(common(symbols({"--defined-only", programPath()}), library), IsEmpty());
    const std::set<std::string> imported = symbols({"--dynamic", "--undefined-only", programPath()});
    for (const char* name :
         {"vekRwOpen", "vekMemOpen", "vekSerialOpen", "vekClose", "get_s_type", "get_device_id", "doGetDeviceId",
          "vekRunScript", "vekRegReadByte", "vekRegReadWord", "vekRegReadLong", "vekRegReadQuad", "vekRegWriteByte",
          "vekRegWriteWord", "vekRegWriteLong", "vekRegWriteQuad"}) {
        EXPECT_THAT(imported, Contains(name));
        EXPECT_THAT(library, Contains(name));
    }
}

TEST(Binary, ProgramHoldsNoObjectOfTheLibrary)
{
    for (const std::string& name : symbols({"--defined-only", programPath()})) {
        EXPECT_EQ(name.find("3vek"), std::string::npos) << name << " is of the namespace vek";
    }
}

// The stand-in logs its calls; ours knows nothing of that.
TEST(Binary, LibraryPathDecidesWhichLibraryIsUsed)
{
    const TemporaryFolder folder;
    const Variables log = {{"RECORDING_VEK_LOG", folder.path() / "log"}};
    child_process::Command command{.arguments = {programPath(), "--cmd", ""}, .environment = log};
    EXPECT_EQ(child_process::run(command).exitStatus, 0);
    EXPECT_FALSE(folder.holds("log"));
    command.environment["LD_LIBRARY_PATH"] = TOVIRA_FOREIGN_LIBRARY_FOLDER;
    EXPECT_EQ(child_process::run(command).exitStatus, 0);
    EXPECT_TRUE(folder.holds("log"));
}

}  // namespace
}  // namespace program_test
