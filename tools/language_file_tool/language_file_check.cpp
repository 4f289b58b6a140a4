#include "language_file_check.h"

#include <algorithm>

namespace language_file_tool {
namespace {

using Sentences = std::vector<std::string>;

std::string Line(std::size_t id, const std::string& what)
{
    return "Line " + std::to_string(id + 1) + ": " + what + ".";
}

// The placeholders of a text, a blank before each.
std::wstring Placeholders(const std::wstring& text)
{
    constexpr std::wstring_view conversions = L"cCdeEfgGiopsSuxX";
    std::wstring found;
    std::size_t end = 0;
    for (std::size_t start = text.find(L'%'); start != text.npos; start = text.find(L'%', end + 1)) {
        end = text.find_first_not_of(L"-+#.0123456789hlw", start + 1);
        if (end == text.npos) {
            break;
        }
        if (conversions.find(text[end]) != conversions.npos) {
            found += L" " + text.substr(start, end + 1 - start);
        }
    }
    return found;
}

std::string PlaceholdersOrNone(const std::wstring& text)
{
    const std::wstring placeholders = Placeholders(text);
    return placeholders.empty() ? " none" : ToUtf8(placeholders);
}

void CheckText(std::size_t id, const std::wstring& text, const std::wstring& english, Sentences& sentences)
{
    if (text.find_first_not_of(L"\xFEFF\r") == text.npos && !english.empty()) {
        sentences.push_back(Line(id, "the text is empty, in English it is \"" + ToUtf8(english) + "\""));
    } else if (Placeholders(text) != Placeholders(english)) {
        sentences.push_back(Line(
            id, "its placeholders are" + PlaceholdersOrNone(text) + ", those of the English text \"" +
                    ToUtf8(english) + "\" are" + PlaceholdersOrNone(english)));
    }
}

void CheckCarriageReturns(const TextLines& lines, Sentences& sentences)
{
    const auto hasOne = [](const std::wstring& text) { return text.find(L'\r') != text.npos; };
    const auto first = std::find_if(lines.begin(), lines.end(), hasOne);
    if (first != lines.end()) {
        const auto id = static_cast<std::size_t>(first - lines.begin());
        const std::string count = std::to_string(std::count_if(first, lines.end(), hasOne));
        const std::string what = "a carriage return is part of the text, as in " + count + " of the lines; ";
        sentences.push_back(Line(id, what + "a line ends with a line feed alone"));
    }
}

void CheckEnd(const LanguageFile& file, Sentences& sentences)
{
    const std::size_t count = file.lines.size();
    const std::size_t wanted = EnglishLines().size();
    const bool endsWithLineFeed = file.damage.empty() && count > 1 && file.lines.back().empty();
    if (!file.damage.empty()) {
        sentences.push_back(Line(count - 1, "reading stops here, at " + file.damage));
    } else if (endsWithLineFeed) {
        sentences.push_back(Line(count - 1, "the line feed before it makes one more, empty, text"));
    }
    const std::string must = ", " + std::to_string(wanted) + " must be there; the texts from ";
    if (count < wanted) {
        sentences.push_back(
            Line(count - 1, "this is the last line" + must + std::to_string(count) + " on are empty"));
    } else if (count > wanted + (endsWithLineFeed ? 1 : 0)) {
        sentences.push_back(
            Line(wanted, "there are " + std::to_string(count) + " lines" + must + "here on are never shown"));
    }
}

} // namespace

Sentences CheckLanguageFile(const LanguageFile& file)
{
    Sentences sentences;
    if (file.lines[0].starts_with(L'\xFEFF')) {
        sentences.push_back(
            Line(0, "the text starts with a byte-order mark, a character like any other here"));
    }
    for (std::size_t id = 0; id < std::min(file.lines.size(), EnglishLines().size()); ++id) {
        CheckText(id, file.lines[id], EnglishLines()[id], sentences);
    }
    CheckCarriageReturns(file.lines, sentences);
    CheckEnd(file, sentences);
    return sentences;
}

} // namespace language_file_tool
