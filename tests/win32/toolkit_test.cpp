// The user of the toolkit of Windows itself, on real windows.
#include <gtest/gtest.h>
#include <stdexcept>

#include "platform/win32/system.h"
#include "platform/win32/windows.h"
#include "tests/toolkit/user.h"

namespace delvane::user {
namespace {

// The innermost dialog of this thread: it stands before those that it belongs to.
HWND Window() {
    HWND found = nullptr;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM result) -> BOOL {
            wchar_t name[16] = {};
            GetClassNameW(window, name, 16);
            if (std::wstring_view(name) != L"#32770" || IsWindowEnabled(window) == 0) return TRUE;
            *reinterpret_cast<HWND*>(result) = window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found;
}

HWND Control(std::uint32_t id) { return GetDlgItem(Window(), static_cast<int>(id)); }

CArea AreaOf(const RECT& rect) {
    return {static_cast<int>(rect.left), static_cast<int>(rect.top), static_cast<int>(rect.right),
            static_cast<int>(rect.bottom)};
}

LPARAM MiddleOf(const RECT& area) { return MAKELPARAM((area.left + area.right) / 2, (area.top + area.bottom) / 2); }

void ClickAt(HWND control, const RECT& area) {
    SendMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, MiddleOf(area));
    SendMessageW(control, WM_LBUTTONUP, 0, MiddleOf(area));
}

// Whether the text of a label or a button fits into it, in its own font.
bool Fits(HWND control, const RECT& place) {
    wchar_t text[256] = {};
    const int length = GetWindowTextW(control, text, 256);
    const HDC context = GetDC(control);
    const HGDIOBJ before = SelectObject(context, reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0)));
    RECT wanted{};
    DrawTextW(context, text, length, &wanted, DT_CALCRECT);
    SelectObject(context, before);
    ReleaseDC(control, context);
    return wanted.right <= place.right - place.left && wanted.bottom <= place.bottom - place.top;
}

HMENU Menu(std::size_t popup) { return GetSubMenu(GetMenu(Window()), static_cast<int>(popup)); }

void PressKey(WPARAM key) {
    const HWND focus = GetFocus() != nullptr ? GetFocus() : Window();
    PostMessageW(focus, WM_KEYDOWN, key, 1);
    PostMessageW(focus, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

std::uint32_t g_answer = 0;

}  // namespace

CToolkit& GetToolkit() {
    static CString problem;
    static const std::unique_ptr<CToolkit> toolkit = LoadToolkit(problem);
    if (toolkit == nullptr) throw std::runtime_error(problem);
    return *toolkit;
}

// A dialog of Windows takes keys from its beginning on, and appears when nothing else is left to do.
void WaitForWindow() { EXPECT_NE(Window(), nullptr); }

void Press(EKey key) {
    if (key != EKey::kF1) return PressKey(key == EKey::kReturn ? VK_RETURN : VK_ESCAPE);
    // What the system makes of F1, for the control that has the focus.
    HELPINFO help{};
    help.cbSize = sizeof help;
    SendMessageW(GetFocus(), WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
}

void Type(std::string_view text) {
    for (const wchar_t letter : Widen(text))
        SendMessageW(GetFocus(), WM_CHAR, letter, 1);
}

void Focus(std::uint32_t id) { SetFocus(Control(id)); }

bool HasFocus(std::uint32_t id) { return GetFocus() == Control(id) || GetParent(GetFocus()) == Control(id); }

void Click(std::uint32_t id) {
    RECT area{};
    GetClientRect(Control(id), &area);
    ClickAt(Control(id), area);
}

void ClickItem(std::uint32_t id, int index, bool withControl) {
    const HWND list = Control(id);
    RECT area{};
    if (!withControl) {
        SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&area));
        return ClickAt(list, area);
    }
    ListView_GetItemRect(list, index, &area, LVIR_LABEL);
    // A list asks the keyboard itself whether Ctrl is held.
    BYTE keys[256] = {};
    GetKeyboardState(keys);
    keys[VK_CONTROL] = 0x80;
    SetKeyboardState(keys);
    PostMessageW(list, WM_LBUTTONUP, MK_CONTROL, MiddleOf(area));
    SendMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON | MK_CONTROL, MiddleOf(area));
    keys[VK_CONTROL] = 0;
    SetKeyboardState(keys);
}

void CloseBox() { PostMessageW(Window(), WM_CLOSE, 0, 0); }

void Choose(std::uint32_t menuEntry) { SendMessageW(Window(), WM_COMMAND, menuEntry, 0); }

std::size_t CountEntries(std::size_t popup) { return static_cast<std::size_t>(GetMenuItemCount(Menu(popup))); }

bool IsMenuEntryEnabled(std::uint32_t menuEntry) {
    return (GetMenuState(GetMenu(Window()), menuEntry, MF_BYCOMMAND) & MF_GRAYED) == 0;
}

void PickSuggestion(std::uint32_t combo, int index) {
    SendMessageW(Control(combo), CB_SHOWDROPDOWN, TRUE, 0);
    for (int i = 0; i <= index; ++i)
        PressKey(VK_DOWN);
    PressKey(VK_RETURN);
}

int CountSuggestions(std::uint32_t combo) { return static_cast<int>(SendMessageW(Control(combo), CB_GETCOUNT, 0, 0)); }

bool HasPictures(std::uint32_t list) { return ListView_GetImageList(Control(list), LVSIL_SMALL) != nullptr; }

std::vector<CPlaced> GetPlaces(CArea& window) {
    RECT inside{};
    GetClientRect(Window(), &inside);
    window = AreaOf(inside);
    std::vector<CPlaced> places;
    for (HWND child = GetWindow(Window(), GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        wchar_t name[64] = {};
        RECT place{};
        GetClassNameW(child, name, 64);
        GetWindowRect(child, &place);
        MapWindowPoints(nullptr, Window(), reinterpret_cast<POINT*>(&place), 2);
        const bool isButton = std::wstring_view(name) == L"Button";
        const bool isGroup = isButton && (GetWindowLongPtrW(child, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
        const bool hasText = !isGroup && (isButton || std::wstring_view(name) == L"Static");
        places.push_back({Narrow(name), AreaOf(place), isGroup, !hasText || Fits(child, place)});
    }
    return places;
}

std::vector<int> GetScales() { return {96, 120, 144, 192, 288}; }

void SetScale(int scale) {
    const RECT place{10, 10, 100, 100};
    if (const HWND window = Window()) {
        SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(scale, scale), reinterpret_cast<LPARAM>(&place));
    }
}

void AnswerBox(std::uint32_t button) {
    g_answer = button;
    SetTimer(nullptr, 0, 50, [](HWND, UINT, UINT_PTR timer, DWORD) {
        const HWND box = FindWindowW(L"#32770", L"A title");
        if (box == nullptr) return;
        KillTimer(nullptr, timer);
        PostMessageW(box, WM_COMMAND, g_answer, 0);
    });
}

bool HasWaitCursor() {
    constexpr int kWait = 32514;
    return GetCursor() == LoadCursorW(nullptr, MAKEINTRESOURCEW(kWait));
}

CArea GetSplash() {
    RECT place{};
    const HWND splash = FindWindowW(L"DelvaneSplash", nullptr);
    if (splash == nullptr || GetWindowRect(splash, &place) == 0) return {};
    const HDC context = GetDC(splash);
    const COLORREF corner = GetPixel(context, 2, 2);
    const COLORREF sheet = GetPixel(context, 78 + 75, 66 + 130);  // of the mark, which is white there
    ReleaseDC(splash, context);
    EXPECT_LT(GetRValue(corner), 64) << "dark blue";
    EXPECT_GT(GetRValue(sheet), 200);
    return AreaOf(place);
}

}  // namespace delvane::user
