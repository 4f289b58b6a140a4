#include "scripted_dialog.h"

namespace {

constexpr int Width = 120;
constexpr int Height = 60;
const COLORREF DialogColour = GetSysColor(COLOR_BTNFACE);

// A colour for each pixel, the same with red and blue exchanged.
COLORREF PictureColour(int x, int y)
{
    return RGB(x * 2, y * 4, x * 2);
}

HBITMAP MakePicture()
{
    std::vector<COLORREF> pixels;
    for (int i = 0; i < Width * Height; ++i) {
        pixels.push_back(PictureColour(i % Width, i / Width));
    }
    return CreateBitmap(Width, Height, 1, 32, pixels.data());
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
    ScriptedDialog dialog;
    dialog.atStart = [&] { dialog.SetBackgroundImage(MakePicture(), CDialogEx::BACKGR_TOPLEFT); };
    RunAndLook(dialog, [&] {
        int textPixels = 0;
        for (int i = 0; i < (Width + 1) * (Height + 1); ++i) {
            const POINT at{i % (Width + 1), i / (Width + 1)};
            const bool isText =
                ChildWindowFromPoint(dialog.m_hWnd, at) == GetDlgItem(dialog.m_hWnd, IDC_TEXT);
            const COLORREF expected =
                at.x < Width && at.y < Height ? PictureColour(at.x, at.y) : DialogColour;
            if (const COLORREF painted = PaintedAt(dialog, at.x, at.y); painted != expected) {
                ASSERT_TRUE(isText) << at.x << ", " << at.y;
                ++textPixels;
            }
        }
        EXPECT_GT(textPixels, 0);
        EXPECT_LT(textPixels, 20) << "a hyphen and nothing behind it";
    });
}

TEST(BackgroundImage, IsDeletedOnlyWhereTheDialogOwnsIt)
{
    for (const bool owned : {true, false}) {
        HBITMAP replaced = MakePicture();
        HBITMAP last = MakePicture();
        {
            CDialogEx dialog(IDD_CONTROLS);
            dialog.SetBackgroundImage(replaced, CDialogEx::BACKGR_TOPLEFT, owned);
            dialog.SetBackgroundImage(replaced, CDialogEx::BACKGR_TOPLEFT, owned);
            EXPECT_EQ(GetObjectType(replaced), OBJ_BITMAP);
            dialog.SetBackgroundImage(last, CDialogEx::BACKGR_TOPLEFT, owned);
            EXPECT_EQ(GetObjectType(replaced), owned ? 0u : OBJ_BITMAP);
        }
        EXPECT_EQ(GetObjectType(last), owned ? 0u : OBJ_BITMAP);
    }
}
