#include "scripted_dialog.h"
#include "support/resource_counts.h"

namespace {

constexpr int Width = 120;
constexpr int Height = 60;
const COLORREF DialogColour = GetSysColor(COLOR_BTNFACE);

// Every pixel of a picture has a colour of its own, which is the same with red and blue exchanged.
COLORREF PictureColour(int x, int y)
{
    return RGB(x * 2, y * 4, x * 2);
}

HBITMAP MakePicture()
{
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), Width, -Height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HBITMAP picture = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    for (int i = 0; i < Width * Height; ++i) {
        static_cast<COLORREF*>(bits)[i] = PictureColour(i % Width, i / Width);
    }
    return picture;
}

COLORREF PaintedAt(const CWnd& window, int x, int y)
{
    HDC dc = GetDC(window.m_hWnd);
    const COLORREF colour = GetPixel(dc, x, y);
    ReleaseDC(window.m_hWnd, dc);
    return colour;
}

} // namespace

TEST(BackgroundImage, IsAtTheTopLeftUnscaledAndBehindStaticTexts)
{
    ScriptedDialog dialog(IDD_CONTROLS);
    dialog.atStart = [&] { dialog.SetBackgroundImage(MakePicture(), CDialogEx::BACKGR_TOPLEFT); };
    RunAndLook(dialog, [&] {
        int textPixels = 0;
        for (int y = 0; y < Height + 20; ++y) {
            for (int x = 0; x < Width + 20; ++x) {
                const COLORREF expected = x < Width && y < Height ? PictureColour(x, y) : DialogColour;
                if (ChildWindowFromPoint(dialog.m_hWnd, {x, y}) == GetDlgItem(dialog.m_hWnd, IDC_TEXT)) {
                    textPixels += PaintedAt(dialog, x, y) != expected;
                } else {
                    ASSERT_EQ(PaintedAt(dialog, x, y), expected) << x << ", " << y;
                }
            }
        }
        EXPECT_GT(textPixels, 0);
        EXPECT_LT(textPixels, 20) << "a hyphen and nothing behind it";

        dialog.SetBackgroundImage(nullptr, CDialogEx::BACKGR_TOPLEFT);
        EXPECT_EQ(PaintedAt(dialog, 8, 8), DialogColour) << "repainted at once";
        dialog.SetBackgroundImage(MakePicture(), CDialogEx::BACKGR_TOPLEFT);
        EXPECT_EQ(PaintedAt(dialog, 8, 8), PictureColour(8, 8)) << "repainted at once";
    });
}

TEST(BackgroundImage, IsDeletedOnlyWhereTheDialogOwnsIt)
{
    for (const bool owned : {true, false}) {
        HBITMAP replaced = MakePicture();
        HBITMAP last = MakePicture();
        {
            CDialogEx dialog(IDD_PLAIN);
            dialog.SetBackgroundImage(replaced, CDialogEx::BACKGR_TOPLEFT, owned);
            dialog.SetBackgroundImage(replaced, CDialogEx::BACKGR_TOPLEFT, owned);
            EXPECT_EQ(GetObjectType(replaced), OBJ_BITMAP);
            dialog.SetBackgroundImage(last, CDialogEx::BACKGR_TOPLEFT, owned);
            EXPECT_EQ(GetObjectType(replaced), owned ? 0u : OBJ_BITMAP);
            EXPECT_EQ(GetObjectType(last), OBJ_BITMAP);
        }
        EXPECT_EQ(GetObjectType(last), owned ? 0u : OBJ_BITMAP);
    }
}

TEST(BackgroundImage, LeavesNoGdiObjectBehind)
{
    const auto run = [](int dialogs) {
        for (int i = 0; i < dialogs; ++i) {
            ScriptedDialog dialog(IDD_CONTROLS);
            RunAndLook(dialog, [&] { dialog.SetBackgroundImage(MakePicture(), CDialogEx::BACKGR_TOPLEFT); });
        }
    };
    run(5);
    const int before = CountGdiObjects();
    HBITMAP leak = MakePicture();
    ASSERT_EQ(CountGdiObjects(), before + 1) << "the count sees a leak";
    DeleteObject(leak);
    run(200);
    EXPECT_LE(CountGdiObjects(), before);
}
