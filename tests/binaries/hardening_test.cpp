// How the installed programs and libraries are hardened, as their files tell (ELF, System V ABI, AMD64 supplement).

#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "child_process.h"
#include "scratch.h"

namespace
{

/** A 64-bit ELF file of this machine. */
class ElfFile
{
public:
    explicit ElfFile(const std::string& path) : bytes_(Scratch::contents(path))
    {
        header_ = at<Elf64_Ehdr>(0);
        for (unsigned index = 0; index < header_.e_phnum; ++index) {
            segments_.push_back(at<Elf64_Phdr>(header_.e_phoff + index * sizeof(Elf64_Phdr)));
        }
        readDynamicSection();
        readDynamicSymbols();
    }

    static bool isElf(const std::string& path) { return Scratch::contents(path).starts_with(ELFMAG); }

    const Elf64_Ehdr& header() const { return header_; }
    const std::vector<Elf64_Phdr>& segments() const { return segments_; }
    /** Names that the file asks others for. */
    const std::set<std::string>& imports() const { return imports_; }
    /** Functions that it gives to others, with their addresses. */
    const std::map<std::string, Elf64_Addr>& functions() const { return functions_; }

    std::vector<Elf64_Xword> entries(Elf64_Sxword tag) const
    {
        const auto found = dynamic_.find(tag);
        return found == dynamic_.end() ? std::vector<Elf64_Xword>{} : found->second;
    }

    Elf64_Xword flags(Elf64_Sxword tag) const
    {
        const std::vector<Elf64_Xword> all = entries(tag);
        return all.empty() ? 0 : all.front();
    }

    /** A text that an entry of the dynamic section points to. */
    std::string text(Elf64_Xword offset) const { return bytes_.c_str() + fileOffset(flags(DT_STRTAB)) + offset; }

    const Elf64_Phdr* segment(Elf64_Word type) const
    {
        const auto found =
            std::find_if(segments_.begin(), segments_.end(), [type](const auto& one) { return one.p_type == type; });
        return found == segments_.end() ? nullptr : &*found;
    }

    /** Whether an indirect branch may lead to an address. */
    bool isLandingPad(Elf64_Addr address) const
    {
        constexpr std::string_view kEndbr64 = "\xf3\x0f\x1e\xfa";
        return std::string_view(bytes_).substr(fileOffset(address)).starts_with(kEndbr64);
    }

    /** The features of the GNU property note that all objects of the file share. */
    Elf64_Word sharedFeatures() const
    {
        const Elf64_Phdr* const notes = segment(PT_GNU_PROPERTY);
        Elf64_Word features = 0;
        std::size_t place = notes == nullptr ? 0 : notes->p_offset + sizeof(Elf64_Nhdr) + sizeof ELF_NOTE_GNU;
        const std::size_t end = notes == nullptr ? 0 : notes->p_offset + notes->p_filesz;
        while (place + 2 * sizeof(Elf64_Word) < end) {
            const auto type = at<Elf64_Word>(place);
            const auto size = at<Elf64_Word>(place + sizeof(Elf64_Word));
            place += 2 * sizeof(Elf64_Word);
            features |= type == GNU_PROPERTY_X86_FEATURE_1_AND ? at<Elf64_Word>(place) : 0;
            place += (size + 7U) & ~7U;
        }
        return features;
    }

private:
    template <typename Item>
    Item at(std::size_t offset) const
    {
        Item item{};
        EXPECT_LE(offset + sizeof item, bytes_.size());
        std::memcpy(&item, bytes_.data() + offset, sizeof item);
        return item;
    }

    std::size_t fileOffset(Elf64_Addr address) const
    {
        for (const Elf64_Phdr& one : segments_) {
            if (one.p_type == PT_LOAD && address >= one.p_vaddr && address - one.p_vaddr < one.p_filesz) {
                return address - one.p_vaddr + one.p_offset;
            }
        }
        ADD_FAILURE() << "nothing at " << address;
        return 0;
    }

    void readDynamicSection()
    {
        const Elf64_Phdr* const section = segment(PT_DYNAMIC);
        ASSERT_NE(section, nullptr);
        for (std::size_t place = section->p_offset; place < section->p_offset + section->p_filesz;
             place += sizeof(Elf64_Dyn)) {
            const auto entry = at<Elf64_Dyn>(place);
            dynamic_[entry.d_tag].push_back(entry.d_un.d_val);
        }
    }

    void readDynamicSymbols()
    {
        for (unsigned index = 0; index < header_.e_shnum; ++index) {
            const auto section = at<Elf64_Shdr>(header_.e_shoff + index * sizeof(Elf64_Shdr));
            for (std::size_t place = 0; section.sh_type == SHT_DYNSYM && place < section.sh_size;
                 place += sizeof(Elf64_Sym)) {
                const auto symbol = at<Elf64_Sym>(section.sh_offset + place);
                if (symbol.st_shndx == SHN_UNDEF) {
                    imports_.insert(text(symbol.st_name));
                } else if (ELF64_ST_TYPE(symbol.st_info) == STT_FUNC) {
                    functions_[text(symbol.st_name)] = symbol.st_value;
                }
            }
        }
    }

    std::string bytes_;
    Elf64_Ehdr header_{};
    std::vector<Elf64_Phdr> segments_;
    std::map<Elf64_Sxword, std::vector<Elf64_Xword>> dynamic_;
    std::set<std::string> imports_;
    std::map<std::string, Elf64_Addr> functions_;
};

/** All that an installation puts in place. */
class InstalledFiles : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (!TOVIRA_HARDENED) {
            return;
        }
        prefix_ = std::make_unique<Scratch>();
        const child_process::Result result = child_process::run(
            {.arguments = {TOVIRA_CMAKE, "--install", TOVIRA_BUILD_FOLDER, "--prefix", prefix_->path()}});
        ASSERT_EQ(result.exitStatus, 0) << result.output << result.error;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(prefix_->path())) {
            if (entry.is_regular_file() && !entry.is_symlink() && ElfFile::isElf(entry.path())) {
                const bool isLibrary = entry.path().filename().string().find(".so") != std::string::npos;
                (isLibrary ? libraries_ : programs_).emplace(entry.path().filename(), ElfFile(entry.path()));
            }
        }
    }
    static void TearDownTestSuite()
    {
        prefix_.reset();
        programs_.clear();
        libraries_.clear();
    }

    void SetUp() override
    {
        if (!TOVIRA_HARDENED) {
            GTEST_SKIP() << "an instrumented build is not hardened";
        }
    }

    /** Calls a check with every file. */
    template <typename Check>
    static void forEachFile(Check check)
    {
        for (const auto* files : {&programs_, &libraries_}) {
            for (const auto& [name, file] : *files) {
                SCOPED_TRACE(name);
                check(file);
            }
        }
    }

    static inline std::unique_ptr<Scratch> prefix_;
    static inline std::map<std::string, ElfFile> programs_;
    static inline std::map<std::string, ElfFile> libraries_;
};

TEST_F(InstalledFiles, AreThere)
{
    EXPECT_TRUE(programs_.contains("tovira_util_tool"));
    EXPECT_TRUE(programs_.contains("vek_board"));
    EXPECT_TRUE(programs_.contains("vek_describe"));
    EXPECT_TRUE(libraries_.contains("libutil_vek.so"));
    EXPECT_TRUE(libraries_.contains("libvek_description.so"));
}

TEST_F(InstalledFiles, LieWhereverTheLoaderPutsThem)
{
    forEachFile([](const ElfFile& file) {
        EXPECT_EQ(file.header().e_type, ET_DYN);
        EXPECT_TRUE(file.entries(DT_TEXTREL).empty());
        EXPECT_EQ(file.flags(DT_FLAGS) & DF_TEXTREL, 0U);
    });
    for (const auto& [name, file] : programs_) {
        EXPECT_NE(file.flags(DT_FLAGS_1) & DF_1_PIE, 0U) << name;
    }
}

TEST_F(InstalledFiles, AreBoundAndProtectedBeforeTheyRun)
{
    forEachFile([](const ElfFile& file) {
        EXPECT_NE(file.segment(PT_GNU_RELRO), nullptr);
        EXPECT_NE(file.flags(DT_FLAGS) & DF_BIND_NOW, 0U);
        EXPECT_NE(file.flags(DT_FLAGS_1) & DF_1_NOW, 0U);
    });
}

TEST_F(InstalledFiles, RunNoDataAndNoStack)
{
    forEachFile([](const ElfFile& file) {
        const Elf64_Phdr* const stack = file.segment(PT_GNU_STACK);
        ASSERT_NE(stack, nullptr);
        EXPECT_EQ(stack->p_flags & PF_X, 0U);
        for (const Elf64_Phdr& segment : file.segments()) {
            EXPECT_NE(segment.p_flags & (PF_W | PF_X), static_cast<Elf64_Word>(PF_W | PF_X));
        }
    });
}

TEST_F(InstalledFiles, CheckTheirStackAndTheirBuffers)
{
    forEachFile([](const ElfFile& file) {
        EXPECT_TRUE(file.imports().contains("__stack_chk_fail"));
        const auto isChecked = [](const std::string& name) { return name.starts_with("__") && name.ends_with("_chk"); };
        EXPECT_EQ(std::any_of(file.imports().begin(), file.imports().end(), isChecked), TOVIRA_OPTIMIZED != 0);
        // Unchecked ones beside them would be of files that were built without.
        for (const char* unchecked : {"printf", "fprintf", "vprintf", "vfprintf"}) {
            EXPECT_TRUE(!TOVIRA_OPTIMIZED || !file.imports().contains(unchecked)) << unchecked;
        }
    });
}

#ifdef __x86_64__
TEST_F(InstalledFiles, ProtectTheirBranchesAndReturns)
{
    static constexpr Elf64_Word kProtected = GNU_PROPERTY_X86_FEATURE_1_IBT | GNU_PROPERTY_X86_FEATURE_1_SHSTK;
    forEachFile([](const ElfFile& file) {
        EXPECT_EQ(file.sharedFeatures() & kProtected, kProtected);
        // The loader calls these; those of the C library's start files have no landing pad.
        EXPECT_TRUE(file.entries(DT_INIT).empty());
        EXPECT_TRUE(file.entries(DT_FINI).empty());
        for (const auto& [function, address] : file.functions()) {
            EXPECT_TRUE(file.isLandingPad(address)) << function;
        }
    });
    for (const auto& [name, file] : programs_) {
        EXPECT_TRUE(file.isLandingPad(file.header().e_entry)) << name;
    }
}
#endif

TEST_F(InstalledFiles, LookForLibrariesBesideThemselvesOnly)
{
    forEachFile([](const ElfFile& file) {
        EXPECT_TRUE(file.entries(DT_RPATH).empty());
        for (const Elf64_Xword offset : file.entries(DT_RUNPATH)) {
            std::istringstream folders(file.text(offset));
            for (std::string folder; std::getline(folders, folder, ':');) {
                EXPECT_TRUE(folder == "$ORIGIN" || folder.starts_with("$ORIGIN/")) << folder;
            }
            EXPECT_FALSE(file.text(offset).empty() || file.text(offset).ends_with(':'));
        }
    });
}

}  // namespace
