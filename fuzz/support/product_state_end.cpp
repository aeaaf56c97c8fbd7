// Linked behind the product's objects, see product_state_begin.cpp.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "support/product_state.h"
#include "support/require.h"

extern "C" {
alignas(64) unsigned char fuzzProductDataEnd[64] = {1};
alignas(64) unsigned char fuzzProductZeroesEnd[64];
extern unsigned char fuzzProductDataBegin[64];
extern unsigned char fuzzProductZeroesBegin[64];
}

namespace fuzz
{
namespace
{

using Word = std::uint64_t;

/// A stretch of variables, with the sanitizer's red zones between them. This file is compiled without the sanitizers,
/// and the words are volatile so that no function of the C library that checks takes the copying over.
class Stretch
{
public:
    Stretch(unsigned char* begin, unsigned char* end)
        : words_(reinterpret_cast<Word*>(begin)), count_(static_cast<std::size_t>(end - begin) / sizeof(Word))
    {
        require(begin < end);
        kept_.reset(new Word[count_]);
        keep();
    }

    void putBack()
    {
        volatile Word* const to = words_;
        for (std::size_t i = 0; i < count_; ++i) {
            to[i] = kept_[i];
        }
    }

private:
    void keep()
    {
        const volatile Word* const from = words_;
        for (std::size_t i = 0; i < count_; ++i) {
            kept_[i] = from[i];
        }
    }

    Word* words_;
    std::size_t count_;
    std::unique_ptr<Word[]> kept_;
};

}  // namespace

void resetProductState()
{
    static Stretch* const data = new Stretch(fuzzProductDataBegin, fuzzProductDataEnd);
    static Stretch* const zeroes = new Stretch(fuzzProductZeroesBegin, fuzzProductZeroesEnd);
    data->putBack();
    zeroes->putBack();
}

}  // namespace fuzz
