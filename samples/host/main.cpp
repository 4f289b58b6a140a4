// A host application as small as one can be: its command line and its window call the library.
#include "main_window.h"
#include "options.h"
#include "product_call.h"
#include "unattended_user.h"

#include <cstdio>

namespace {

int RunCommand(const Options& options)
{
    const ProductCall call =
        options.command == L"check" ? ProductCall::CheckForUpdates : ProductCall::Upgrade;
    std::wstring outcome;
    const auto work = [&] { outcome = CallAndDescribe(call, options); };
    if (options.isUnattended) {
        WithUnattendedUser({options.buys, options.looksMs}, work);
    } else {
        work();
    }
    PrintLine(L"outcome: " + outcome);
    return 0;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const auto options = ReadOptions({argv + 1, argv + argc});
    if (!options) {
        std::fputws(Usage, stderr);
        return 2;
    }
    return options->command.empty() ? RunMainWindow(*options) : RunCommand(*options);
}
