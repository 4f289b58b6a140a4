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
    /// Nothing: any host is trusted.
    std::optional<std::wstring> trustedHosts;
    unsigned timeLimitSeconds = 0;
    bool acceptsAnyCertificate = false;
    bool usesSystemProxy = true;
    bool printsJson = false;
    /// The folder of the program whose DLL the doctor looks at; empty: this program's own.
    std::wstring programFolder;
};

/// What the command line asks for: a command, or a text to print and to end with.
struct ParsedCommandLine
{
    std::optional<Options> options = {};
    std::wstring text = {};
    /// 0 for a help text; 2 for wrong usage, which the text then names in one line.
    int status = 0;
};

/// Parses the arguments that follow the program's name.
ParsedCommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);

} // namespace product_services_tool
