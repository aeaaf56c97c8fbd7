// Prints the description of the built-in cards to start one's own from, and checks descriptions.

#include <getopt.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "card/host_pages.h"
#include "description/builtin_text.h"
#include "description/load_reader.h"
#include "description/summary.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr std::array<option, 4> kOptions{{{"check", required_argument, nullptr, 'c'},
                                          {"help", no_argument, nullptr, 'h'},
                                          {"version", no_argument, nullptr, 'v'},
                                          {nullptr, 0, nullptr, 0}}};

void printUsage(std::FILE* out, const char* program)
{
    std::fprintf(out,
                 "Usage: %s [--check FILE]\n"
                 "Prints the description of the built-in simulated cards, to start one's own from.\n"
                 "The environment variable VEK_CARD_DESCRIPTION names one to the library; it is not looked at here.\n"
                 "  --check FILE  look for mistakes in a description, and say what it describes\n"
                 "  --help        print this text\n"
                 "  --version     print the version\n",
                 program);
}

/// What is printed has to get through: a description that ends in the middle may still be one.
int printed()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::perror("vek_describe: standard output");
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

void printLine(void* /*context*/, bool warning, const char* line)
{
    std::fprintf(stderr, "%s%s\n", line, warning ? " (a warning)" : "");
}

int check(const char* file)
{
    auto* const readDescription = loadDescriptionReader();
    if (readDescription == nullptr) {
        return EXIT_FAILURE;
    }
    unsigned char* const pages = mapHostPages(sizeof(DescribedCards));
    if (pages == nullptr) {
        std::perror("vek_describe");
        return EXIT_FAILURE;
    }
    auto* const cards = new (pages) DescribedCards;
    const DescriptionListener listener{.tell = printLine, .context = nullptr};
    const int result = readDescription(file, cards, sizeof *cards, &listener);
    if (result != VEK_OK) {
        if (result == VEK_NO_MEMORY || result == VEK_BAD_ARGUMENT) {
            std::fprintf(stderr, "vek_describe: the description cannot be read (%d)\n", result);
        }
        return EXIT_FAILURE;
    }
    printSummary(stdout, *cards);
    return printed();
}

}  // namespace
}  // namespace vek

int main(int argc, char** argv)
{
    const char* file = nullptr;
    int found = 0;
    while ((found = getopt_long(argc, argv, "", vek::kOptions.data(), nullptr)) != -1) {
        switch (found) {
            case 'c':
                file = optarg;
                break;
            case 'h':
                vek::printUsage(stdout, argv[0]);
                return vek::printed();
            case 'v':
                std::puts("vek_describe " VEK_VERSION);
                return vek::printed();
            default:
                vek::printUsage(stderr, argv[0]);
                return EXIT_FAILURE;
        }
    }
    if (optind < argc) {
        vek::printUsage(stderr, argv[0]);
        return EXIT_FAILURE;
    }
    if (file != nullptr) {
        return vek::check(file);
    }
    std::fputs(vek::kBuiltinDescription, stdout);
    return vek::printed();
}
