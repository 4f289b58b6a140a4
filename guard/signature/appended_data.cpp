#include "signature/appended_data.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <wintrust.h>

namespace product_services_guard {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The size of the signature's entry in the file is a multiple of this.
constexpr std::uint64_t Alignment = 8;
constexpr std::size_t CertificateHeaderSize = offsetof(WIN_CERTIFICATE, bCertificate);
// A tag, the number of the length's bytes, and at most four of these.
constexpr std::size_t MaxDerHeaderSize = 6;

// Returns the bytes at `offset`, or fewer at the end of the file.
Bytes ReadAt(HANDLE file, std::uint64_t offset, std::size_t size)
{
    Bytes bytes(size);
    OVERLAPPED position{};
    position.Offset = static_cast<DWORD>(offset);
    position.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD read = 0;
    ReadFile(file, bytes.data(), static_cast<DWORD>(size), &read, &position);
    bytes.resize(read);
    return bytes;
}

template <typename Structure>
std::optional<Structure> ReadStructure(HANDLE file, std::uint64_t offset)
{
    const Bytes bytes = ReadAt(file, offset, sizeof(Structure));
    if (bytes.size() != sizeof(Structure)) {
        return std::nullopt;
    }
    Structure structure;
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t*>(&structure));
    return structure;
}

// Returns the signature's offset in the file and its size.
std::optional<IMAGE_DATA_DIRECTORY> FindSignature(HANDLE file)
{
    const auto dosHeader = ReadStructure<IMAGE_DOS_HEADER>(file, 0);
    if (!dosHeader || dosHeader->e_magic != IMAGE_DOS_SIGNATURE) {
        return std::nullopt;
    }
    const auto start = static_cast<std::uint64_t>(dosHeader->e_lfanew);
    const auto headers = ReadStructure<IMAGE_NT_HEADERS64>(file, start);
    if (!headers || headers->Signature != IMAGE_NT_SIGNATURE) {
        return std::nullopt;
    }
    if (headers->OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR64_MAGIC) {
        return headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_SECURITY];
    }
    const auto headers32 = ReadStructure<IMAGE_NT_HEADERS32>(file, start);
    return headers32->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_SECURITY];
}

// Returns the size of a DER value, including its tag and length: 30 82 0A 0B is followed by 0x0A0B bytes.
std::optional<std::uint64_t> GetDerSize(const Bytes& beginning)
{
    if (beginning.size() < 2) {
        return std::nullopt;
    }
    const std::uint8_t length = beginning[1];
    if (length < 0x80) {
        return 2 + length;
    }
    const std::size_t lengthBytes = length & 0x7Fu;
    if (beginning.size() < 2 + lengthBytes) {
        return std::nullopt;
    }
    std::uint64_t size = 0;
    for (std::size_t i = 0; i < lengthBytes; ++i) {
        size = size << 8 | beginning[2 + i];
    }
    return 2 + lengthBytes + size;
}

bool IsZeroPadding(const Bytes& bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

} // namespace

bool HasAppendedData(HANDLE file)
{
    const std::optional<IMAGE_DATA_DIRECTORY> signature = FindSignature(file);
    if (!signature || signature->Size == 0) {
        return false;
    }
    LARGE_INTEGER fileSize{};
    GetFileSizeEx(file, &fileSize);
    const std::uint64_t start = signature->VirtualAddress;
    const std::uint64_t end = start + signature->Size;
    const auto derSize = GetDerSize(ReadAt(file, start + CertificateHeaderSize, MaxDerHeaderSize));
    if (end != static_cast<std::uint64_t>(fileSize.QuadPart) || !derSize) {
        return true;
    }
    const std::uint64_t used = CertificateHeaderSize + *derSize;
    if (used > signature->Size || signature->Size - used >= Alignment) {
        return true;
    }
    return !IsZeroPadding(ReadAt(file, start + used, static_cast<std::size_t>(signature->Size - used)));
}

} // namespace product_services_guard
