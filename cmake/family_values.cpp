// The texts of a product family in a section of their own, each with its NUL, for family_texts.py: what a
// header says is known to its compiler alone.
#include "product_family.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

using namespace product_family;

constexpr std::wstring_view Texts[]{ServiceBaseAddress, RecordRegistryPath, KnownApiKeys[0], KnownApiKeys[1],
                                    KnownApiKeys[2],    KnownApiKeys[3],    KnownApiKeys[4], KnownApiKeys[5]};

constexpr std::size_t Length = [] {
    std::size_t length = 0;
    for (const std::wstring_view text : Texts) {
        length += text.size() + 1;
    }
    return length;
}();

[[gnu::section(".family"), gnu::used]] constinit const auto Values = [] {
    std::array<wchar_t, Length> values{};
    auto end = values.begin();
    for (const std::wstring_view text : Texts) {
        end = std::ranges::copy(text, end).out + 1;
    }
    return values;
}();

} // namespace
