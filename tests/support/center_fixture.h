// The upgrade center of the DLL, on a screen.
#pragma once

#include "support/library_fixture.h"

#include "ui/resource.h"

#include <commctrl.h>

class CenterTest : public LibraryTest
{
protected:
    CenterTest()
    {
        service.Answer(R"([{"name":"First","version":"2","url":"https://shop/first"},)"
                       R"({"name":"Second","version":"3.1","url":"https://shop/second?a=b&c=%20"}])");
    }

    static HWND List(HWND center) { return GetDlgItem(center, IDC_UPGRADE_OFFERS); }

    /// Shows the center to somebody who looks at it and leaves with Exit.
    Outcome Look(const User& look)
    {
        return ShowUpgrades([&](HWND center) {
            look(center);
            automation::Press(center, IDCANCEL);
        });
    }
};
