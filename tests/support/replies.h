// Replies of the service and the outcomes of calls that receive them, from replies.json.
#pragma once

#include "data_file.h"

#include <string>
#include <vector>

struct Reply
{
    std::string name;
    std::string text;
    std::wstring outcome;
};

/// The replies that have an outcome for `call`, which is "check" or "center".
inline std::vector<Reply> RepliesTo(const std::string& call)
{
    std::vector<Reply> replies;
    const auto cases = ReadDataFile("library/replies.json");
    for (const auto& [name, found] : cases.items()) {
        if (found.contains(call)) {
            const std::string text = found.contains("json") ? found["json"].dump() : found.value("text", "");
            const std::string outcome = found[call];
            replies.push_back({name, text, {outcome.begin(), outcome.end()}});
        }
    }
    return replies;
}
