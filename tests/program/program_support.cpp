#include "program_support.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace program_test
{

std::string programPath()
{
    return TOVIRA_UTIL_TOOL;
}

std::string usageText()
{
    const std::string name = programPath();
    return name + " usage.\n" +                                                                           //
           "eg:\n" +                                                                                      //
           name + "\n\texecute command if /dev/vekrw device exist!\n" +                                   //
           name + " -i enter interactive command line.\n" +                                               //
           name + " --cmd \"xxx xxx\" \n\t The cmdline requires DOUBLE QUOTATION MARKS.\n" +              //
           name + " --mem reg_start,reg_size,vram_start,vram_size\n" +                                    //
           "\tenter command line using /dev/vekrw device (root).\n" +                                     //
           "\treg_start,reg_size,vram_start,vram_size are all in hex without 0x or space\n" +             //
           name + " --tty ttyUSB0,9600\n\tenter command line using /dev/ttyUSB0,9600 device (root).\n" +  //
           "\t baudrate is supported 9600 19200 38400 115200 460800\n" +                                  //
           "\tall addresses are in AMBA SPACE\n" +                                                        //
           name + " --card id to open card device.\n" +                                                   //
           name + " --gpu type to set device id.\n";
}

TemporaryFolder::TemporaryFolder()
{
    std::string name = std::filesystem::temp_directory_path() / "program_testXXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot create " + name);
    }
    path_ = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void TemporaryFolder::writeFile(const std::string& name, std::string_view contents) const
{
    std::ofstream file(path_ / name, std::ios::binary | std::ios::trunc);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + name);
    }
}

std::string TemporaryFolder::readFile(const std::string& name) const
{
    std::ifstream file(path_ / name, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + name);
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

child_process::Result runOnCard(const Arguments& arguments, const std::filesystem::path& folder)
{
    Arguments command = arguments;
    command.insert(command.begin(), programPath());
    return child_process::run({.arguments = command, .folder = folder});
}

RecordedRun runRecorded(const Arguments& arguments, const Variables& variables, const std::string& input)
{
    const TemporaryFolder folder;
    folder.writeFile("log", "");
    Arguments command = arguments;
    command.insert(command.begin(), programPath());
    Variables environment = {{"LD_LIBRARY_PATH", TOVIRA_FOREIGN_LIBRARY_FOLDER},
                             {"RECORDING_VEK_LOG", folder.path() / "log"}};
    for (const auto& [name, value] : variables) {
        environment["RECORDING_VEK_" + name] = value;
    }
    RecordedRun run;
    run.result =
        child_process::run({.arguments = command, .environment = environment, .input = input, .folder = folder.path()});
    std::istringstream log(folder.readFile("log"));
    for (std::string line; std::getline(log, line);) {
        run.calls.push_back(line);
    }
    return run;
}

}  // namespace program_test
