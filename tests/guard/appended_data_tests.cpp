// Data that is in a signed program, but not covered by its signature. Windows accepts some of it.
#include "signature/appended_data.h"
#include "support/test_folder.h"
#include "unique_handle.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>

using namespace product_services_guard;
using namespace std::string_literals;

namespace {

template <typename Structure>
std::string ToBytes(const Structure& structure)
{
    return {reinterpret_cast<const char*>(&structure), sizeof structure};
}

// The headers of a program, and at its end the entry of its signature: eight bytes and the signature.
template <typename NtHeaders>
std::string MakeProgram(const std::string& signature)
{
    constexpr DWORD EntryOffset = 512;
    constexpr bool Is64Bit = std::is_same_v<NtHeaders, IMAGE_NT_HEADERS64>;
    const std::string entry = "\0\0\0\0\0\2\2\0"s + signature;
    NtHeaders headers{};
    headers.Signature = IMAGE_NT_SIGNATURE;
    headers.OptionalHeader.Magic = Is64Bit ? IMAGE_NT_OPTIONAL_HDR64_MAGIC : IMAGE_NT_OPTIONAL_HDR32_MAGIC;
    headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_SECURITY] = {
        EntryOffset, static_cast<DWORD>(entry.size())};
    IMAGE_DOS_HEADER dos{};
    dos.e_magic = IMAGE_DOS_SIGNATURE;
    dos.e_lfanew = sizeof dos;
    std::string program = ToBytes(dos) + ToBytes(headers);
    program.resize(EntryOffset);
    return program + entry;
}

bool IsFoundIn(const std::string& content)
{
    const TestFolder folder;
    WriteFile("program.exe", L"", content);
    const UniqueHandle file(
        CreateFileW(L"program.exe", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    return HasAppendedData(file.get());
}

} // namespace

TEST(AppendedData, IsFoundInAndBehindTheSignature)
{
    const struct
    {
        const char* name;
        std::string signature;
        bool isFound;
    } cases[]{
        {"a signature of eight bytes", "\x30\6signed"s, false},
        {"padded with zeros to eight bytes", "\x30\1s\0\0\0\0\0"s, false},
        {"eight zeros behind it", "\x30\6signed\0\0\0\0\0\0\0\0"s, true},
        {"padded with something else", "\x30\1s\0\0\0\0p"s, true},
        {"a size of two bytes", "\x30\x82\1\2"s + std::string(0x102, 's') + "\0\0"s, false},
        {"a size of two bytes, and data behind it", "\x30\x82\1\2"s + std::string(0x102 + 10, 's'), true},
        {"longer than its entry", "\x30\7signed"s, true},
        {"a size of five bytes", "\x30\x85\0\0\0\0\1s"s, true},
        {"no size", "\x30"s, true},
    };
    for (const auto& [name, signature, isFound] : cases) {
        EXPECT_EQ(IsFoundIn(MakeProgram<IMAGE_NT_HEADERS32>(signature)), isFound) << "32-bit: " << name;
        EXPECT_EQ(IsFoundIn(MakeProgram<IMAGE_NT_HEADERS64>(signature)), isFound) << "64-bit: " << name;
        EXPECT_TRUE(IsFoundIn(MakeProgram<IMAGE_NT_HEADERS32>(signature) + "x")) << "behind it: " << name;
    }
}

TEST(AppendedData, IsNotSearchedInOtherFiles)
{
    EXPECT_FALSE(IsFoundIn("a Windows Installer package, which has no headers of a program"));
    EXPECT_FALSE(IsFoundIn("XX" + MakeProgram<IMAGE_NT_HEADERS64>("\x30\7signed"s).substr(2)));
}
