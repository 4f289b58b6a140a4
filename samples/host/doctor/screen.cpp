#include "checks.h"

#include <windows.h>

namespace doctor {

Finding CheckScreen()
{
    // The program's manifest says that it knows scales, so Windows tells the real one.
    const HDC screen = GetDC(nullptr);
    const int percent = GetDeviceCaps(screen, LOGPIXELSX) * 100 / 96;
    ReleaseDC(nullptr, screen);
    const std::wstring scale = std::to_wstring(percent) + L" %";
    if (percent > 100) {
        return {
            State::Note, L"screen",
            scale + L": Windows enlarges the upgrade center, or, with the host's scaling, its picture stays "
                    L"small",
            rows::Looks};
    }
    return {State::Ok, L"screen", scale, rows::Looks};
}

} // namespace doctor
