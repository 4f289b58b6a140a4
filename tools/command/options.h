// The command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace product_services_tool {

enum class Command
{
    Check,
    Upgrade,
    Doctor,
    Version
};

struct Options
{
    Command command = Command::Version;
    std::wstring product;
    std::wstring version;
    std::wstring apiKey;
    int languageId = 0;
    /// If not set, any host is trusted.
    std::optional<std::wstring> trustedHosts;
    unsigned timeLimitSeconds = 0;
    bool acceptsAnyCertificate = false;
    bool usesSystemProxy = true;
    bool printsJson = false;
    /// The folder of the program whose DLL the doctor checks. Empty for this program's folder.
    std::wstring programFolder;
};

/// Either the options of a command, or a text to print before exiting.
struct ParsedCommandLine
{
    std::optional<Options> options = {};
    std::wstring text = {};
    /// 0 for a help text, or 2 for an error, which the text describes in one line.
    int status = 0;
};

/// Parses the arguments after the program's name.
ParsedCommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);

} // namespace product_services_tool
