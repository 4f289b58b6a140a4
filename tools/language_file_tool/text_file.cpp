#include "text_file.h"

#include "text/text_ids.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <stdexcept>

namespace language_file_tool {

using namespace product_services;

namespace {

const char Head[] =
    "# The texts of the update check and of the upgrade center, for translation.\n"
    "#\n"
    "# Translate what is behind the \"=\". Every number from 0 to 87 must stay, once.\n"
    "# - Blanks count, those at the start and at the end of a text too; add no quotation marks.\n"
    "# - \"|\" is a line break.\n"
    "# - Placeholders, such as %s and %d, must stay, in the order of the English text.\n"
    "# - Lines that start with \"#\" are comments. Save the file as UTF-8.\n"
    "# Make the language file with: LanguageFileTool build FILE.txt FILE.lang\n";

const std::map<TextId, std::string> Usages{
    {text_ids::Exit, "upgrade center: the button that leaves it"},
    {text_ids::UpgradeCenter, "upgrade center: title and heading"},
    {text_ids::ProductName, "upgrade center: head of the list's first column"},
    {text_ids::ProductVersion, "upgrade center: head of the list's second column"},
    {text_ids::BuyNow, "upgrade center: the button that buys"},
    {text_ids::UnknownError, "message of result code 400"},
    {text_ids::NoInternet, "message box of the update check; message of result code 503"},
    {text_ids::ServerUnreachable, "message of result code 504"},
    {text_ids::UserQuit, "message of result code 540"},
    {text_ids::NoUpgrades, "message of result code 920"},
    {text_ids::BrowserOpened, "message of result code 930"},
    {text_ids::NoConnection, "message of result code 940"},
    {text_ids::NoProductRecord, "message of result code 950"},
    {text_ids::LatestVersion, "message box of the update check"},
    {75, "never shown"},
    {text_ids::UnstableConnection, "message of result code 0"},
};

// A run of reserved texts has one comment.
std::string Comment(TextId id)
{
    const auto usage = Usages.find(id);
    if (usage != Usages.end()) {
        return "\n# " + std::to_string(id) + " - " + usage->second +
               "; English: " + ToUtf8(EnglishLines()[static_cast<std::size_t>(id)]) + "\n";
    }
    if (id > 0 && !Usages.contains(id - 1)) {
        return "";
    }
    const auto next = Usages.lower_bound(id);
    const TextId last = (next == Usages.end() ? static_cast<TextId>(EnglishLines().size()) : next->first) - 1;
    const std::string range = std::to_string(id) + (last > id ? " to " + std::to_string(last) : "");
    return "\n# " + range + " - reserved, never shown\n";
}

class Parser
{
public:
    explicit Parser(const std::string& name) : m_name(name) {}

    TextLines Parse(std::string_view bytes)
    {
        if (bytes.starts_with("\xEF\xBB\xBF")) {
            bytes.remove_prefix(3);
        }
        while (!bytes.empty()) {
            const std::string_view line = bytes.substr(0, bytes.find('\n'));
            bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
            ++m_line;
            ReadLine(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
        }
        for (std::size_t id = 0; id < m_foundIn.size(); ++id) {
            Require(m_foundIn[id] != 0, "the file ends without text " + std::to_string(id));
        }
        return m_texts;
    }

private:
    void Require(bool condition, const std::string& otherwise) const
    {
        if (!condition) {
            throw std::runtime_error(m_name + ", line " + std::to_string(m_line) + ": " + otherwise + ".");
        }
    }

    void ReadLine(std::string_view line)
    {
        Require(FromUtf8(line).has_value(), "this is not UTF-8");
        Require(line.find('\r') == line.npos, "a carriage return is inside of the line");
        if (!line.starts_with('#') && line.find_first_not_of(" \t") != line.npos) {
            ReadText(line);
        }
    }

    void ReadText(std::string_view line)
    {
        int number = 0;
        const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
        const auto length = static_cast<std::size_t>(end - line.data());
        Require(
            length > 0 && line.substr(length).starts_with('='),
            "this is neither a text, such as 12=Exit, nor a comment, which starts with #");
        // A negative number is too large for an id as well.
        const auto id = static_cast<std::size_t>(number);
        Require(
            error == std::errc() && id < m_texts.size(),
            "there is no text " + std::string(line.substr(0, length)) + ", only 0 to 87");
        Require(
            m_foundIn[id] == 0,
            "text " + std::to_string(id) + " is in line " + std::to_string(m_foundIn[id]) + " already");
        m_foundIn[id] = m_line;
        m_texts[id] = *FromUtf8(line.substr(length + 1));
    }

    std::string m_name;
    int m_line = 0;
    TextLines m_texts = TextLines(EnglishLines().size());
    std::vector<int> m_foundIn = std::vector<int>(EnglishLines().size());
};

} // namespace

std::string FormatTextFile(const TextLines& lines)
{
    std::string bytes = Head;
    for (std::size_t id = 0; id < lines.size(); ++id) {
        bytes += Comment(static_cast<TextId>(id)) + std::to_string(id) + "=" + ToUtf8(lines[id]) + "\n";
    }
    return bytes;
}

TextLines ParseTextFile(std::string_view bytes, const std::string& name)
{
    return Parser(name).Parse(bytes);
}

} // namespace language_file_tool
