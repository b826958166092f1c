// The dialogs on the real window system: controls that are clicked and typed into.
#include "platform/toolkit.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

#include "platform/win32/wide.h"
#include "platform/win32/windows.h"
#include "resources/dialogs.h"

namespace delvane {
namespace {

CToolkit& Toolkit() {
    static CString problem;
    static const std::unique_ptr<CToolkit> toolkit = LoadToolkit(problem);
    if (toolkit == nullptr) throw std::runtime_error(problem);
    return *toolkit;
}

// A dialog that notes what it is told and ends with OK and Cancel. Its steps are done one after the other, each when
// everything that the one before has set off is handled.
class CRecorder : public CDialogEvents {
public:
    using CStep = std::function<void(HWND)>;

    explicit CRecorder(std::uint32_t dialog) : m_pWindow(Toolkit().CreateDialog(GetDialogTemplate(dialog), *this)) {}

    void OnInit() override {
        EXPECT_EQ(FindOwn(true), nullptr) << "it is not shown yet";
        if (m_onInit) m_onInit();
        m_log.clear();
        m_pWindow->PostMessage(kStep, 0, 0);
    }
    void OnControl(std::uint32_t id, EControlEvent event) override {
        m_log.push_back(std::to_string(id) + "/" + std::to_string(static_cast<int>(event)));
        if (event == EControlEvent::kClicked && (id == IDOK || id == IDCANCEL)) m_pWindow->End(id);
    }
    void OnMessage(std::uint32_t message, std::uint32_t wParam, std::uint32_t) override {
        if (message != kStep) {
            m_log.push_back("message " + std::to_string(message) + " " + std::to_string(wParam));
            if (message == WM_USER) m_pWindow->End(IDOK);
            return;
        }
        const HWND window = FindOwn(false);
        if (m_nNext == m_steps.size()) {
            Press(window, VK_ESCAPE);
        } else {
            m_steps[m_nNext++](window);
            m_pWindow->PostMessage(kStep, 0, 0);
        }
    }
    void OnMenuOpening(std::size_t popup) override { m_log.push_back("menu " + std::to_string(popup)); }

    // Shows the dialog, takes the steps, and closes it by Esc if it is still there.
    std::uint32_t Run(std::vector<CStep> steps) {
        m_steps = std::move(steps);
        return m_pWindow->RunModal();
    }

    // A key goes to the control that has the focus.
    static void Press(HWND window, WPARAM key) {
        const HWND focus = GetFocus() != nullptr ? GetFocus() : window;
        PostMessageW(focus, WM_KEYDOWN, key, 1);
        PostMessageW(focus, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
    }

    std::function<void()> m_onInit;
    std::vector<CString> m_log;
    std::unique_ptr<CDialogWindow> m_pWindow;

private:
    static constexpr std::uint32_t kStep = 0x5000;

    // The dialog of this thread; the visible one alone if that is wanted.
    static HWND FindOwn(bool visible) {
        static bool wantsVisible;
        wantsVisible = visible;
        HWND found = nullptr;
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND window, LPARAM result) -> BOOL {
                wchar_t name[16] = {};
                GetClassNameW(window, name, 16);
                if (std::wstring_view(name) != L"#32770" || (wantsVisible && !IsWindowVisible(window))) return TRUE;
                *reinterpret_cast<HWND*>(result) = window;
                return FALSE;
            },
            reinterpret_cast<LPARAM>(&found));
        return found;
    }

    std::vector<CStep> m_steps;
    std::size_t m_nNext = 0;
};

HWND Control(HWND window, std::uint32_t id) { return GetDlgItem(window, static_cast<int>(id)); }

// A press of the mouse's first button in the middle of the area.
void ClickAt(HWND control, RECT area, WPARAM keys = 0) {
    const LPARAM place = MAKELPARAM((area.left + area.right) / 2, (area.top + area.bottom) / 2);
    SendMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON | keys, place);
    SendMessageW(control, WM_LBUTTONUP, keys, place);
}
void Click(HWND control) {
    RECT area{};
    GetClientRect(control, &area);
    ClickAt(control, area);
}

struct CChild {
    HWND m_hWnd;
    std::wstring m_class;
    LONG_PTR m_nStyle;
    RECT m_place;
};
std::vector<CChild> ChildrenOf(HWND window) {
    std::vector<CChild> children;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        wchar_t name[64] = {};
        RECT place{};
        GetClassNameW(child, name, 64);
        GetWindowRect(child, &place);
        MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
        children.push_back({child, name, GetWindowLongPtrW(child, GWL_STYLE), place});
    }
    return children;
}

// Whether the text of a label or a button fits into it, in its own font.
bool Fits(const CChild& child) {
    wchar_t text[256] = {};
    const int length = GetWindowTextW(child.m_hWnd, text, 256);
    const HDC context = GetDC(child.m_hWnd);
    const auto font = reinterpret_cast<HGDIOBJ>(SendMessageW(child.m_hWnd, WM_GETFONT, 0, 0));
    const HGDIOBJ before = SelectObject(context, font);
    RECT wanted{};
    DrawTextW(context, text, length, &wanted, DT_CALCRECT);
    SelectObject(context, before);
    ReleaseDC(child.m_hWnd, context);
    return wanted.right <= child.m_place.right - child.m_place.left &&
           wanted.bottom <= child.m_place.bottom - child.m_place.top;
}

TEST(Toolkit, NothingIsCutOffAtAnyScaling) {
    for (const std::uint32_t id :
         {IDD_ABOUT, IDD_MAIN, IDD_PROGRESS, IDD_NEW_SNAPSHOT, IDD_LOAD_SNAPSHOT, IDD_OPTIONS}) {
        CRecorder dialog(id);
        int widest = 0;
        dialog.Run({[&](HWND window) {
            for (const int dpi : {96, 120, 144, 192, 288}) {
                const RECT place{10, 10, 100, 100};
                SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&place));
                SCOPED_TRACE("dialog " + std::to_string(id) + " at " + std::to_string(dpi));
                RECT inside{};
                GetClientRect(window, &inside);
                EXPECT_GT(inside.right, widest) << "it grows with the scaling";
                widest = inside.right;
                const std::vector<CChild> children = ChildrenOf(window);
                ASSERT_EQ(children.size(), GetDialogTemplate(id).m_controls.size());
                for (const CChild& child : children) {
                    RECT shared{};
                    const bool isGroup = child.m_class == L"Button" && (child.m_nStyle & BS_TYPEMASK) == BS_GROUPBOX;
                    EXPECT_TRUE(IntersectRect(&shared, &inside, &child.m_place) && EqualRect(&shared, &child.m_place))
                        << Narrow(child.m_class);
                    if (child.m_class == L"Static" || child.m_class == L"Button") {
                        EXPECT_TRUE(isGroup || Fits(child)) << Narrow(child.m_class);
                    }
                    for (const CChild& other : children) {
                        const bool isOtherGroup =
                            other.m_class == L"Button" && (other.m_nStyle & BS_TYPEMASK) == BS_GROUPBOX;
                        if (&other == &child || isGroup || isOtherGroup) continue;
                        EXPECT_FALSE(IntersectRect(&shared, &other.m_place, &child.m_place)) << Narrow(child.m_class);
                    }
                }
            }
        }});
    }
}

TEST(Toolkit, ClicksAndKeysReachTheDialog) {
    CRecorder name(IDD_NEW_SNAPSHOT);
    const std::uint32_t result =
        name.Run({[](HWND window) {
                      EXPECT_EQ(GetParent(GetFocus()), Control(window, IDC_NAME)) << "the first control has the focus";
                      for (const wchar_t letter : std::wstring_view(L"a\u00E9"))
                          SendMessageW(GetFocus(), WM_CHAR, letter, 1);
                  },
                  [&](HWND window) {
                      EXPECT_EQ(name.m_pWindow->GetText(IDC_NAME), "a\xC3\xA9");
                      Click(Control(window, IDC_COMPARE_AFTER));
                      EXPECT_EQ(name.m_pWindow->GetCheck(IDC_COMPARE_AFTER), 1);
                      name.m_pWindow->Enable(IDOK, false);
                      CRecorder::Press(window, VK_RETURN);
                  },
                  [&](HWND window) {
                      EXPECT_EQ(name.m_log.size(), 3U) << "a disabled default button is not pressed";
                      name.m_pWindow->Enable(IDOK, true);
                      CRecorder::Press(window, VK_RETURN);
                  }});
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(name.m_log, (std::vector<CString>{"1011/1", "1011/1", "1012/0", "1/0"}));

    CRecorder main(IDD_MAIN);
    const std::uint32_t mainResult =
        main.Run({[&](HWND window) {
                      main.m_pWindow->SetText(1003, "Gr\u00F6\u00DFe (v2.1)");
                      EXPECT_EQ(main.m_pWindow->GetText(1003), "Gr\u00F6\u00DFe (v2.1)");
                      SendMessageW(Control(window, 1003), WM_CHAR, L'x', 1);
                      EXPECT_EQ(main.m_pWindow->GetText(1003), "Gr\u00F6\u00DFe (v2.1)") << "read only";
                      Click(Control(window, IDC_CREATE_BASELINE));
                      // What the system makes of F1, for the control that has the focus.
                      HELPINFO help{};
                      help.cbSize = sizeof help;
                      SendMessageW(Control(window, 1003), WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
                  },
                  [&](HWND window) {
                      main.m_pWindow->EnableMenuEntry(IDC_COMPARE, false);
                      const HMENU file = GetSubMenu(GetMenu(window), 0);
                      SendMessageW(window, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(file), 0);
                      EXPECT_NE(GetMenuState(file, IDC_COMPARE, MF_BYCOMMAND) & MF_GRAYED, 0U);
                      EXPECT_EQ(GetMenuState(file, IDM_EXIT, MF_BYCOMMAND) & MF_GRAYED, 0U);
                      EXPECT_EQ(GetMenuItemCount(file), 9);
                      SendMessageW(window, WM_COMMAND, IDM_EXIT, 0);
                      SetFocus(Control(window, 1003));
                      CRecorder::Press(window, VK_RETURN);
                  }});
    EXPECT_EQ(mainResult, IDOK) << "Enter without a default button";
    EXPECT_EQ(main.m_log, (std::vector<CString>{"1004/0", "57670/0", "menu 0", "57665/0", "1/0"}));
    EXPECT_EQ(CRecorder(IDD_LOAD_SNAPSHOT).Run({}), IDCANCEL) << "Esc";
    EXPECT_EQ(CRecorder(IDD_PROGRESS).Run({[](HWND window) { PostMessageW(window, WM_CLOSE, 0, 0); }}), IDCANCEL);
}

// The chosen entry reaches the edit part only behind the event that tells of it.
TEST(Toolkit, AComboBoxOffersNamesAndTakesOthers) {
    CRecorder name(IDD_NEW_SNAPSHOT);
    CString during;
    CString after;
    name.Run({[&](HWND window) {
                  const HWND combo = Control(window, IDC_NAME);
                  EXPECT_EQ(SendMessageW(combo, CB_GETCOUNT, 0, 0), 4);
                  SendMessageW(combo, CB_SHOWDROPDOWN, TRUE, 0);
                  CRecorder::Press(window, VK_DOWN);
                  CRecorder::Press(window, VK_RETURN);
              },
              [&](HWND) { after = name.m_pWindow->GetText(IDC_NAME); }});
    EXPECT_EQ(after, "Pre-Install");
    EXPECT_GE(std::count(name.m_log.begin(), name.m_log.end(), "1011/2"), 1);
    EXPECT_EQ(std::count(name.m_log.begin(), name.m_log.end(), "1011/3"), 1);
}

TEST(Toolkit, ListsAndThreeStateBoxes) {
    CRecorder options(IDD_OPTIONS);
    CDialogWindow& window = *options.m_pWindow;
    options.m_onInit = [&] {
        window.AddItem(IDC_DRIVES, "C: [System]", 3, true);
        window.AddItem(IDC_DRIVES, "D:", 5, false);
        EXPECT_TRUE(window.IsItemSelected(IDC_DRIVES, 0));
    };
    options.Run({[&](HWND handle) {
        const HWND list = Control(handle, IDC_DRIVES);
        ASSERT_NE(ListView_GetImageList(list, LVSIL_SMALL), nullptr);
        RECT second{};
        ListView_GetItemRect(list, 1, &second, LVIR_LABEL);
        // A list asks the keyboard itself whether Ctrl is held.
        BYTE keys[256] = {};
        GetKeyboardState(keys);
        keys[VK_CONTROL] = 0x80;
        SetKeyboardState(keys);
        const auto place = MAKELPARAM((second.left + second.right) / 2, (second.top + second.bottom) / 2);
        PostMessageW(list, WM_LBUTTONUP, MK_CONTROL, place);
        SendMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON | MK_CONTROL, place);
        keys[VK_CONTROL] = 0;
        SetKeyboardState(keys);
        EXPECT_TRUE(window.IsItemSelected(IDC_DRIVES, 0) && window.IsItemSelected(IDC_DRIVES, 1));
        window.SelectItem(IDC_DRIVES, 0, false);
        EXPECT_FALSE(window.IsItemSelected(IDC_DRIVES, 0));
        for (const int state : {1, 2, 0, 1}) {
            Click(Control(handle, IDC_HARD_DRIVES));
            EXPECT_EQ(window.GetCheck(IDC_HARD_DRIVES), state);
        }
    }});
    EXPECT_EQ(std::count(options.m_log.begin(), options.m_log.end(), "1025/2"), 2);
    EXPECT_EQ(std::count(options.m_log.begin(), options.m_log.end(), "1021/0"), 4);

    CRecorder load(IDD_LOAD_SNAPSHOT);
    load.m_onInit = [&] {
        load.m_pWindow->AddEntry(IDC_SNAPSHOTS, "B");
        load.m_pWindow->AddEntry(IDC_SNAPSHOTS, "a");
    };
    load.Run({[&](HWND handle) {
        EXPECT_EQ(load.m_pWindow->GetText(IDC_SNAPSHOTS), "") << "nothing is selected at the start";
        RECT first{};
        SendMessageW(Control(handle, IDC_SNAPSHOTS), LB_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&first));
        ClickAt(Control(handle, IDC_SNAPSHOTS), first);
        EXPECT_EQ(load.m_pWindow->GetText(IDC_SNAPSHOTS), "a") << "sorted";
    }});
    EXPECT_EQ(load.m_log, (std::vector<CString>{"1013/2", "2/0"}));
}

TEST(Toolkit, MessagesOfAnotherThreadComeInOrder) {
    CRecorder progress(IDD_PROGRESS);
    std::thread worker([&] {
        for (std::uint32_t i = 0; i < 1000; ++i)
            progress.m_pWindow->PostMessage(WM_USER + 1, i, 0);
        progress.m_pWindow->PostMessage(WM_USER, 0, 0);
    });
    worker.join();  // they wait for a window
    progress.m_onInit = [&] { EXPECT_TRUE(progress.m_log.empty()); };
    // Steps come behind what was posted before them, so the dialog ends before there is one.
    EXPECT_EQ(progress.Run({[](HWND) { FAIL() << "the dialog should have ended"; }}), IDOK);
    ASSERT_EQ(progress.m_log.size(), 1001U);
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(progress.m_log[i], "message 1025 " + std::to_string(i));
}

TEST(Toolkit, QuestionsGiveTheirAnswers) {
    static WPARAM press;
    const auto answer = [](EMessageButtons buttons, std::uint32_t id) {
        press = id;
        const UINT_PTR timer = SetTimer(nullptr, 0, 50, [](HWND, UINT, UINT_PTR, DWORD) {
            const HWND box = FindWindowW(L"#32770", L"A title");
            if (box != nullptr) PostMessageW(box, WM_COMMAND, press, 0);
        });
        const std::uint32_t given = Toolkit().ShowMessage("Line\ntwo", "A title", buttons, EMessageIcon::kQuestion);
        KillTimer(nullptr, timer);
        return given;
    };
    Toolkit().BeginWaitCursor();
    const HCURSOR waiting = GetCursor();
    EXPECT_EQ(answer(EMessageButtons::kYesNoCancel, IDYES), IDYES);
    EXPECT_EQ(answer(EMessageButtons::kYesNoCancel, IDNO), IDNO);
    EXPECT_EQ(answer(EMessageButtons::kYesNoCancel, IDCANCEL), IDCANCEL);
    EXPECT_EQ(answer(EMessageButtons::kYesNo, IDNO), IDNO);
    EXPECT_EQ(answer(EMessageButtons::kOk, IDOK), IDOK);
    EXPECT_EQ(GetCursor(), waiting) << "the wait goes on";
    Toolkit().EndWaitCursor();
    EXPECT_NE(GetCursor(), waiting);
}

TEST(Toolkit, TheSplashIsPaintedAtOnce) {
    ASSERT_TRUE(Toolkit().ShowSplash());
    const HWND splash = FindWindowW(L"DelvaneSplash", nullptr);
    ASSERT_NE(splash, nullptr);
    RECT place{};
    GetWindowRect(splash, &place);
    EXPECT_EQ(place.right - place.left, 591);
    EXPECT_EQ(place.bottom - place.top, 368);
    const HDC context = GetDC(splash);
    const COLORREF corner = GetPixel(context, 2, 2);
    const COLORREF sheet = GetPixel(context, 78 + 75, 66 + 130);  // of the mark, which is white there
    ReleaseDC(splash, context);
    EXPECT_LT(GetRValue(corner), 64) << "dark blue";
    EXPECT_GT(GetRValue(sheet), 200);
    Toolkit().HideSplash();
    EXPECT_FALSE(IsWindow(splash));
    Toolkit().HideSplash();
}

}  // namespace
}  // namespace delvane
