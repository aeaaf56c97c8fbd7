#include <elf.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "declared_functions.h"

namespace
{

/** What the dynamic linker sees of the built library. */
class DynamicObject
{
public:
    explicit DynamicObject(const char* name)
    {
        std::ifstream file(name, std::ios::binary);
        image_.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        const auto header = at<Elf64_Ehdr>(0);
        if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
            throw std::runtime_error(std::string(name) + " is not an ELF file");
        }
        for (std::size_t index = 0; index < header.e_shnum; ++index) {
            sections_.push_back(at<Elf64_Shdr>(header.e_shoff + index * sizeof(Elf64_Shdr)));
        }
    }

    std::set<std::string> exportedSymbols() const
    {
        std::set<std::string> names;
        const Elf64_Shdr& table = section(SHT_DYNSYM);
        for (std::size_t at_ = table.sh_offset; at_ < table.sh_offset + table.sh_size; at_ += sizeof(Elf64_Sym)) {
            const auto symbol = at<Elf64_Sym>(at_);
            if (symbol.st_shndx != SHN_UNDEF && ELF64_ST_BIND(symbol.st_info) != STB_LOCAL) {
                names.insert(text(table, symbol.st_name));
            }
        }
        return names;
    }

    std::vector<std::string> dynamicTexts(Elf64_Sxword tag) const
    {
        std::vector<std::string> texts;
        for (const Elf64_Dyn& entry : dynamicEntries()) {
            if (entry.d_tag == tag) {
                texts.push_back(text(section(SHT_DYNAMIC), entry.d_un.d_val));
            }
        }
        return texts;
    }

    bool hasDynamicTag(Elf64_Sxword tag) const
    {
        for (const Elf64_Dyn& entry : dynamicEntries()) {
            if (entry.d_tag == tag) {
                return true;
            }
        }
        return false;
    }

private:
    template <typename Record>
    Record at(std::size_t offset) const
    {
        Record record;
        if (offset + sizeof record > image_.size()) {
            throw std::runtime_error("the ELF file ends early");
        }
        std::memcpy(&record, image_.data() + offset, sizeof record);
        return record;
    }

    const Elf64_Shdr& section(Elf64_Word type) const
    {
        for (const Elf64_Shdr& candidate : sections_) {
            if (candidate.sh_type == type) {
                return candidate;
            }
        }
        throw std::runtime_error("the ELF file lacks a section");
    }

    std::vector<Elf64_Dyn> dynamicEntries() const
    {
        std::vector<Elf64_Dyn> entries;
        const Elf64_Shdr& table = section(SHT_DYNAMIC);
        for (std::size_t offset = 0; offset < table.sh_size; offset += sizeof(Elf64_Dyn)) {
            entries.push_back(at<Elf64_Dyn>(table.sh_offset + offset));
        }
        return entries;
    }

    std::string text(const Elf64_Shdr& user, std::size_t offset) const
    {
        return image_.data() + sections_.at(user.sh_link).sh_offset + offset;
    }

    std::vector<char> image_;
    std::vector<Elf64_Shdr> sections_;
};

TEST(Exports, AreExactlyTheFunctionsOfTheHeader)
{
    const std::set<std::string> declared = declaredFunctions();
    EXPECT_EQ(declared.size(), 125U);
    EXPECT_EQ(DynamicObject(VEK_LIBRARY).exportedSymbols(), declared);
}

TEST(Exports, CarryNoVersions)
{
    EXPECT_FALSE(DynamicObject(VEK_LIBRARY).hasDynamicTag(DT_VERDEF));
}

TEST(Exports, StandUnderTheAgreedSoname)
{
    EXPECT_EQ(DynamicObject(VEK_LIBRARY).dynamicTexts(DT_SONAME), std::vector<std::string>{"libutil_vek.so"});
}

}  // namespace
