// The command line, and the results of calls as they are printed.
#include "call_result.h"
#include "options.h"
#include "support/text_assertions.h"

using namespace product_services_tool;

namespace {

using Arguments = std::vector<std::wstring>;

Arguments CheckWith(const Arguments& more)
{
    Arguments arguments{L"check", L"--product", L"P", L"--version", L"1", L"--api-key", L"K"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

} // namespace

TEST(CommandLine, HasDefaults)
{
    const ParsedCommandLine parsed = ParseCommandLine(CheckWith({}));
    ASSERT_TRUE(parsed.options) << testing::PrintToString(parsed.text);
    EXPECT_EQ(parsed.options->command, Command::Check);
    EXPECT_EQ(parsed.options->product, L"P");
    EXPECT_EQ(parsed.options->version, L"1");
    EXPECT_EQ(parsed.options->apiKey, L"K");
    EXPECT_EQ(parsed.options->languageId, 120);
    EXPECT_FALSE(parsed.options->trustedHosts);
    EXPECT_EQ(parsed.options->timeLimitSeconds, 30u);
    EXPECT_FALSE(parsed.options->acceptsAnyCertificate);
    EXPECT_TRUE(parsed.options->usesSystemProxy);
    EXPECT_FALSE(parsed.options->printsJson);
}

TEST(CommandLine, AcceptsEveryOption)
{
    const ParsedCommandLine parsed = ParseCommandLine(
        {L"doctor", L"--product", L"/Dåta \"1\"", L"--version", L"", L"--api-key", L"K", L"--language",
         L"140", L"--trusted-hosts", L"a.example;*.b.example:8443", L"--time-limit", L"7",
         L"--any-certificate", L"--no-system-proxy", L"--json", L"--program", L"C:\\My App"});
    ASSERT_TRUE(parsed.options) << testing::PrintToString(parsed.text);
    EXPECT_EQ(parsed.options->command, Command::Doctor);
    EXPECT_EQ(parsed.options->product, L"/Dåta \"1\"");
    EXPECT_EQ(parsed.options->version, L"");
    EXPECT_EQ(parsed.options->languageId, 140);
    EXPECT_EQ(parsed.options->trustedHosts, L"a.example;*.b.example:8443");
    EXPECT_EQ(parsed.options->timeLimitSeconds, 7u);
    EXPECT_TRUE(parsed.options->acceptsAnyCertificate);
    EXPECT_FALSE(parsed.options->usesSystemProxy);
    EXPECT_TRUE(parsed.options->printsJson);
    EXPECT_EQ(parsed.options->programFolder, L"C:\\My App");
}

TEST(CommandLine, ReportsErrorsInOneLine)
{
    const struct
    {
        const char* name;
        Arguments arguments;
        const wchar_t* mentioned;
    } cases[]{
        {"no command", {}, L"check, upgrade, doctor and version"},
        {"an unknown command", {L"chek"}, L"chek"},
        {"no product", {L"check"}, L"--product"},
        {"no value", CheckWith({L"--language"}), L"--language"},
        {"an unknown option", CheckWith({L"--unknown"}), L"--unknown"},
        {"an option of another command", CheckWith({L"--program=x"}), L"--program"},
        {"a value that is not a number", CheckWith({L"--language", L"de"}), L"--language"},
        {"a time limit of zero", CheckWith({L"--time-limit", L"0"}), L"--time-limit"},
        {"an invalid host", CheckWith({L"--trusted-hosts", L"a.example;b/"}), L"--trusted-hosts"},
    };
    for (const auto& [name, arguments, mentioned] : cases) {
        SCOPED_TRACE(name);
        const ParsedCommandLine parsed = ParseCommandLine(arguments);
        EXPECT_FALSE(parsed.options);
        EXPECT_EQ(parsed.status, 2);
        EXPECT_EQ(parsed.text.substr(0, 21), L"ProductServicesTool: ");
        EXPECT_TRUE(Contains(parsed.text, mentioned));
        EXPECT_FALSE(Contains(parsed.text, L"\n"));
    }
}

TEST(CommandLine, PrintsDefaultsInHelp)
{
    const ParsedCommandLine parsed = ParseCommandLine({L"check", L"--help"});
    EXPECT_EQ(parsed.status, 0);
    EXPECT_TRUE(Contains(parsed.text, L"--time-limit SECONDS"));
    EXPECT_TRUE(Contains(parsed.text, L"(default: 30)"));
}

TEST(CallResult, NamesEachOutcome)
{
    std::wstring answered;
    for (std::uint32_t value = 1; value <= PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER; ++value) {
        const auto outcome = static_cast<ProductServicesOutcome>(value);
        EXPECT_NE(ToString(outcome), L"FAILED") << value;
        answered += IsAnswered(outcome) ? ToString(outcome) + L" " : L"";
    }
    EXPECT_EQ(answered, L"NEWER_RELEASE UP_TO_DATE BROWSER_OPENED USER_QUIT ");
    EXPECT_EQ(ToString(static_cast<ProductServicesOutcome>(1000)), L"FAILED") << "of a later version";
}

TEST(CallResult, PrintsAsLineOrJson)
{
    const CallResult result{PRODUCT_SERVICES_OUTCOME_REFUSED, 940, L"\"ä\""};
    EXPECT_EQ(ToLine(result), L"REFUSED: \"ä\"");
    EXPECT_EQ(ToLine({PRODUCT_SERVICES_OUTCOME_REFUSED, 940, L"a\r\n\x1B[2J"}), L"REFUSED: a???[2J");
    EXPECT_EQ(ToJson(result), L"{\"outcome\":\"REFUSED\",\"code\":940,\"text\":\"\\\"ä\\\"\"}");
    EXPECT_EQ(ToJson({PRODUCT_SERVICES_OUTCOME_BUSY}), L"{\"outcome\":\"BUSY\",\"code\":null,\"text\":\"\"}");
}
