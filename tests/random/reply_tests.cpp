#include "random/random_cases.h"
#include "support/flow_fixture.h"
#include "support/recording_curl.h"
#include "update/update_check.h"
#include "upgrade/offers.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

using namespace product_services;
using nlohmann::json;

namespace {

std::wstring lastBox;

int WINAPI NoteMessageBox(HWND, LPCWSTR text, LPCWSTR, UINT)
{
    lastBox = text;
    return IDOK;
}

} // namespace

// Stands in for the system's message box, which would wait for a user at every case.
extern "C" {
decltype(&MessageBoxW) __imp_MessageBoxW = NoteMessageBox;
}

namespace {

// What a reply leads to: an error's kind, a message box or a code with its text.
struct Outcome
{
    std::string error;
    std::wstring box;
    std::uint32_t code = NothingReported;
    std::wstring text = L"untouched";
    std::size_t offers = 0;

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* stream)
{
    *stream << outcome.error << "|" << std::string(outcome.box.begin(), outcome.box.end()) << "|"
            << outcome.code << "|" << outcome.offers;
}

std::string RandomText(Random& random)
{
    const char* const pieces[]{
        "a",   "Example", " ",    "2026.1",         "https://a/b?c=d&e", "\xC3\xBC", "\xE7\x89\x88",
        "\\n", "\\u0000", "\\\"", "\\ud83d\\ude00", "\xF0\x9F\x98\x80",  "\\ud800",  "\xFF"};
    std::string text = "\"";
    for (unsigned i = random.Below(4); i > 0; --i) {
        // The last four are what the service should not send.
        text += pieces[random.Below(random.Once(6) ? 14 : 10)];
    }
    return text + "\"";
}

std::string RandomValue(Random& random, int depth);

std::string RandomObject(Random& random, int depth)
{
    const char* const names[]{"name", "version", "url", "status", "error", "", "names"};
    std::string object = "{";
    for (const char* name : {"name", "version", "url"}) {
        if (!random.Once(12)) {
            object += std::string(object.size() > 1 ? "," : "") + "\"" + name +
                      "\":" + (random.Once(12) ? RandomValue(random, depth + 1) : RandomText(random));
        }
    }
    if (random.Once(6)) {
        object += std::string(object.size() > 1 ? "," : "") + "\"" + random.Pick(names) +
                  "\":" + RandomValue(random, depth + 1);
    }
    return object + "}";
}

std::string RandomValue(Random& random, int depth)
{
    const char* const scalars[]{"null", "true", "false", "0",          "-0", "1",
                                "0.9",  "-0.9", "200",   "4294967296", "1e3"};
    if (depth > 5 || random.Once(3)) {
        return random.Once(2) ? random.Pick(scalars) : RandomText(random);
    }
    if (random.Once(2)) {
        return RandomObject(random, depth);
    }
    std::string array = "[";
    for (unsigned i = random.Below(4); i > 0; --i) {
        array += RandomValue(random, depth + 1) + (i > 1 ? "," : "");
    }
    return array + "]";
}

std::string RandomReply(Random& random)
{
    switch (random.Below(8)) {
    case 0:
        return random.Bytes(random.Below(40));
    case 1:
        return R"({"status":)" + RandomValue(random, 3) + R"(,"error":"no"})";
    case 2:
        return RandomValue(random, 0);
    case 3:
        return std::string(random.Below(3000), '[');
    default:
        break;
    }
    std::string reply = "[";
    for (unsigned i = 1 + random.Below(4); i > 0; --i) {
        reply += RandomObject(random, 1) + (i > 1 ? "," : "");
    }
    reply += "]";
    if (random.Once(5)) {
        reply.resize(random.Below(static_cast<unsigned>(reply.size()) + 1));
    }
    if (random.Once(5) && !reply.empty()) {
        reply[random.Below(static_cast<unsigned>(reply.size()))] = static_cast<char>(random.Below(256));
    }
    return reply;
}

bool FitsTheBasicPlane(const std::string& utf8)
{
    return std::none_of(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0xF8) == 0xF0; });
}

// What is wrong with an offer; empty where nothing is.
std::string OfferError(const json& offer)
{
    if (!offer.is_object() && !offer.is_null()) {
        return "305";
    }
    for (const char* member : {"name", "version", "url"}) {
        const json value = offer.is_object() && offer.contains(member) ? offer[member] : json();
        if (!value.is_string()) {
            return "302";
        }
        if (!FitsTheBasicPlane(value.get<std::string>())) {
            return "bad conversion";
        }
    }
    return "";
}

std::optional<Outcome> OutcomeBeforeOffers(const std::string& reply, const json& document, bool isUpgrade)
{
    Outcome outcome;
    if (reply.empty()) {
        isUpgrade ? outcome.code = 920 : 0;
        outcome.box = isUpgrade ? L"" : L"You are running the latest version";
        return outcome;
    }
    if (document.is_discarded()) {
        outcome.error = "101";
        return outcome;
    }
    if (!document.is_object() || !document.contains("status")) {
        return std::nullopt;
    }
    const json& status = document["status"];
    if (!status.is_number() && !status.is_boolean()) {
        outcome.error = "302";
    } else if (status.get<std::int32_t>() == 0) {
        isUpgrade ? outcome.code = 940 : 0;
        outcome.box = isUpgrade ? L"" : L"No internet found!";
    }
    return outcome;
}

Outcome Expected(const std::string& reply, bool isUpgrade)
{
    const json document = json::parse(reply, nullptr, false);
    if (const auto outcome = OutcomeBeforeOffers(reply, document, isUpgrade)) {
        return *outcome;
    }
    Outcome outcome;
    const std::size_t count = isUpgrade ? document.size() : 1;
    if (count > 0 && !document.is_array() && !document.is_null()) {
        outcome.error = "305";
        return outcome;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const json offer = i < document.size() ? document[i] : json();
        outcome.error = OfferError(offer);
        if (!outcome.error.empty()) {
            outcome.offers = 0;
            return outcome;
        }
        ++outcome.offers;
    }
    if (!isUpgrade) {
        const std::string url = document[0]["url"];
        std::wstring wide(url.size(), L'\0');
        wide.resize(static_cast<std::size_t>(MultiByteToWideChar(
            CP_UTF8, 0, url.data(), static_cast<int>(url.size()), wide.data(),
            static_cast<int>(wide.size()))));
        outcome.code = 200;
        outcome.text = wide.c_str();
    }
    return outcome;
}

class RandomReplies : public FlowTest
{
protected:
    Outcome Run(const std::string& reply, bool isUpgrade)
    {
        recording_curl::AnswerWith({.pieces = {reply}});
        std::wcscpy(resultText.data(), L"untouched");
        context.resultCode = NothingReported;
        lastBox.clear();
        Outcome outcome;
        try {
            isUpgrade ? outcome.offers = FetchOffers(*record).size() : (RunUpdateCheck(*record), 0);
        } catch (const json::exception& error) {
            outcome.error = std::to_string(error.id);
        } catch (const std::range_error& error) {
            outcome.error = error.what();
        }
        outcome.box = lastBox;
        outcome.code = context.resultCode;
        // A code of the upgrade center comes with its message, which other tests hold.
        outcome.text = isUpgrade ? L"untouched" : resultText.data();
        return outcome;
    }
};

} // namespace

TEST_F(RandomReplies, LeadWhereTheJsonLibrarySaysTheyShould)
{
    ForEachSeed([&](Random& random) {
        const std::string reply = RandomReply(random);
        Outcome check = Expected(reply, false);
        check.offers = 0;
        EXPECT_EQ(Run(reply, false), check) << reply;
        EXPECT_EQ(Run(reply, true), Expected(reply, true)) << reply;
    });
}
