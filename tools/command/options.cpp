#include "options.h"

#include "calls/text_copy.h"
#include "product_services/product_services.h"
#include "text.h"
#include "url/trusted_hosts.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace product_services_tool {
namespace {

using product_services_guard::FindInvalidEntry;
using product_services_guard::FromUtf8;

// The same as the default of guarded calls.
constexpr unsigned DefaultTimeLimitSeconds = 30;
constexpr unsigned MaxTimeLimitSeconds = 24 * 60 * 60;

constexpr char Footer[] =
    "Exit status of check and upgrade: 0 if the service has answered, 1 if it has not.\n"
    "Exit status of doctor: 0 if it found no error, 1 if it found one. Invalid usage: 2.\n"
    "COMMAND --help lists the options of a command.";

// The values as the parser stores them, in UTF-8.
struct RawOptions
{
    std::string product;
    std::string version;
    std::string apiKey;
    int languageId = PRODUCT_SERVICES_LANGUAGE_EN;
    std::optional<std::string> trustedHosts;
    unsigned timeLimitSeconds = DefaultTimeLimitSeconds;
    bool acceptsAnyCertificate = false;
    bool ignoresSystemProxy = false;
    bool printsJson = false;
    std::string programFolder;
};

std::string CheckTrustedHosts(const std::string& list)
{
    const std::wstring hosts = FromUtf8(list);
    const std::optional<std::wstring_view> invalid = FindInvalidEntry(hosts);
    return invalid ? "it contains an invalid entry: \"" + ToUtf8(*invalid) + "\"" : std::string();
}

template <typename Value>
CLI::Option& AddOption(
    CLI::App& command, const char* name, const char* type, Value& value, const std::string& help)
{
    return *command.add_option(name, value, help)->option_text(type);
}

void AddCallOptions(CLI::App& command, RawOptions& raw)
{
    AddOption(command, "--product", "NAME", raw.product, "product name, as in its record").required();
    AddOption(command, "--version", "TEXT", raw.version, "product version, as in its record").required();
    AddOption(command, "--api-key", "KEY", raw.apiKey, "service API key of the product").required();
    AddOption(
        command, "--language", "ID", raw.languageId,
        "language id of the texts (default: " + std::to_string(raw.languageId) + ", English)");
    AddOption(
        command, "--trusted-hosts", "LIST", raw.trustedHosts,
        "hosts to which URLs may lead, such as \"example.com;*.example.com\" (default: any)")
        .check(CLI::Validator(CheckTrustedHosts, ""));
    AddOption(
        command, "--time-limit", "SECONDS", raw.timeLimitSeconds,
        "time limit for the transfers of a call (default: " + std::to_string(raw.timeLimitSeconds) + ")")
        .check(CLI::Range(1U, MaxTimeLimitSeconds));
    command.add_flag(
        "--any-certificate", raw.acceptsAnyCertificate,
        "accept any certificate of the service (default: verify it)");
    command.add_flag(
        "--no-system-proxy", raw.ignoresSystemProxy,
        "do not use the proxy that is configured in Windows (default: use it)");
    command.add_flag("--json", raw.printsJson, "print JSON (default: text)");
}

Options ToOptions(const RawOptions& raw)
{
    Options options;
    options.product = FromUtf8(raw.product);
    options.version = FromUtf8(raw.version);
    options.apiKey = FromUtf8(raw.apiKey);
    options.languageId = raw.languageId;
    if (raw.trustedHosts) {
        options.trustedHosts = FromUtf8(*raw.trustedHosts);
    }
    options.timeLimitSeconds = raw.timeLimitSeconds;
    options.acceptsAnyCertificate = raw.acceptsAnyCertificate;
    options.usesSystemProxy = !raw.ignoresSystemProxy;
    options.printsJson = raw.printsJson;
    options.programFolder = FromUtf8(raw.programFolder);
    return options;
}

Command ToCommand(const std::string& name)
{
    if (name == "check") {
        return Command::Check;
    }
    if (name == "upgrade") {
        return Command::Upgrade;
    }
    return name == "doctor" ? Command::Doctor : Command::Version;
}

CLI::App& AddCommand(CLI::App& app, const char* name, const char* description)
{
    return *app.add_subcommand(name, description)->group("Commands");
}

void AddCommands(CLI::App& app, RawOptions& raw)
{
    AddCallOptions(AddCommand(app, "check", "Looks for a newer release, without a window."), raw);
    AddCallOptions(AddCommand(app, "upgrade", "Shows the upgrade center."), raw);
    CLI::App& doctor = AddCommand(app, "doctor", "Diagnoses problems without changing anything.");
    AddCallOptions(doctor, raw);
    AddOption(
        doctor, "--program", "FOLDER", raw.programFolder,
        "folder of the application whose DLL to check (default: the folder of this program)");
    AddCommand(app, "version", "Prints the version of this program and the id of its package.");
}

} // namespace

ParsedCommandLine ParseCommandLine(const std::vector<std::wstring>& arguments)
{
    RawOptions raw;
    CLI::App app("Queries a product service for newer releases, and diagnoses problems.");
    app.name("ProductServicesTool");
    app.set_help_flag("-h,--help", "print this help");
    app.allow_windows_style_options(false); // "/name" is a value
    app.footer(Footer);
    app.get_formatter()->column_width(28);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    AddCommands(app, raw);
    // The parser expects them in reverse order.
    std::vector<std::string> reversed;
    std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(reversed), ToUtf8);
    try {
        app.parse(reversed);
    } catch (const CLI::CallForHelp&) {
        std::string help = app.help();
        help.resize(help.find_last_not_of('\n') + 1);
        return {.text = FromUtf8(help)};
    } catch (const CLI::ParseError& error) {
        return {.text = L"ProductServicesTool: " + FromUtf8(error.what()), .status = 2};
    }
    const std::vector<CLI::App*> commands = app.get_subcommands();
    if (commands.size() != 1) {
        return {
            .text = L"ProductServicesTool: one of check, upgrade, doctor and version is required",
            .status = 2};
    }
    Options options = ToOptions(raw);
    options.command = ToCommand(commands.front()->get_name());
    return {.options = options};
}

} // namespace product_services_tool
