// How a template becomes a window:
//
//     the frame     Run hands the system a template without controls. WM_INITDIALOG makes them in the order of ours,
//                   which is that of Tab; the system's own dialog units would be those of another font
//     the units     with each new scaling the font is made anew. A unit is what the font gives, and grows until every
//                   control has room for its text: so all places grow alike, and nothing is cut off
//     the place     over the owner, else in the middle of the screen, and never beyond it
//     the events    WM_COMMAND and WM_NOTIFY become calls of CDialogEvents by the kind of the control
//     posted        messages travel with numbers of their own, since the small ones behind WM_USER have a meaning in
//                   dialogs. What is posted before the window is there waits for it
#include "platform/win32/windows/dialog_window.h"

#include <algorithm>
#include <cmath>
#include <mutex>

#include "platform/win32/system.h"
#include "platform/win32/windows/drawing.h"

namespace delvane {
namespace {

// The number of a posted message on its way: from WM_APP to below those that the system gives away.
constexpr UINT kPostedBase = WM_APP - WM_USER;
constexpr UINT kPostedEnd = 0xC000;

constexpr int kAnySize = -1;  // a text asks for none

// How the controls of a kind are made, and how much more room than its text one needs, in dots at plain scaling.
struct CForm {
    const wchar_t* m_class;
    DWORD m_dwStyle;
    DWORD m_dwExtended = 0;
    int m_nBeside = kAnySize;  // of the width
    int m_nAbove = kAnySize;   // of the height,
    int m_nLowest = 0;         // which is no less than this
};

constexpr CForm kForms[] = {
    {L"STATIC", SS_LEFT, 0, 0, 0},                                                            // kLabel
    {L"BUTTON", BS_GROUPBOX},                                                                 // kGroup
    {L"STATIC", SS_ICON | SS_CENTERIMAGE},                                                    // kIcon
    {L"EDIT", ES_READONLY | ES_AUTOHSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE, kAnySize, 6},      // kText
    {L"BUTTON", BS_PUSHBUTTON | WS_TABSTOP, 0, 16, 8},                                        // kButton
    {L"BUTTON", BS_DEFPUSHBUTTON | WS_TABSTOP, 0, 16, 8},                                     // kDefaultButton
    {L"BUTTON", BS_AUTOCHECKBOX | WS_TABSTOP, 0, 21, 0, 13},                                  // kCheck
    {L"BUTTON", BS_AUTO3STATE | WS_TABSTOP, 0, 21, 0, 13},                                    // kThreeState
    {L"COMBOBOX", CBS_DROPDOWN | CBS_AUTOHSCROLL | WS_VSCROLL | WS_TABSTOP, 0, kAnySize, 6},  // kCombo
    {L"LISTBOX", LBS_SORT | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE},
    {WC_LISTVIEWW, LVS_REPORT | LVS_NOCOLUMNHEADER | LVS_SHOWSELALWAYS | WS_TABSTOP, WS_EX_CLIENTEDGE},
};

// The size of a text as labels and buttons draw it: lines, and mnemonics that take no room.
SIZE TextSize(HDC context, std::string_view text) {
    const std::wstring wide = Widen(text);
    RECT area{};
    DrawTextW(context, wide.data(), static_cast<int>(wide.size()), &area, DT_CALCRECT | DT_LEFT);
    return {area.right, area.bottom};
}

class CWin32Window : public CDialogWindow {
public:
    CWin32Window(CDesk& desk, const CDialogTemplate& dialog, CDialogEvents& events)
        : CDialogWindow(dialog, events), m_desk(desk) {}
    ~CWin32Window() override {
        if (m_hFont != nullptr) DeleteObject(m_hFont);
        DestroyImages(m_hImages);
    }

    void PostMessage(std::uint32_t message, std::uint32_t wParam) override {
        const std::lock_guard lock(m_mutex);
        if (m_hTarget == nullptr) {
            m_early.push_back({message, wParam});
        } else {
            PostMessageW(m_hTarget, kPostedBase + message, wParam, 0);
        }
    }

    void SetText(std::uint32_t id, std::string_view text) override {
        SetWindowTextW(Get(id), Widen(text).c_str());
        if (KindOf(id) == EControlKind::kText) Send(id, EM_SETSEL, 0, 0);
    }
    CString GetText(std::uint32_t id) const override {
        const bool isList = KindOf(id) == EControlKind::kSortedList;
        const auto index = static_cast<WPARAM>(isList ? Send(id, LB_GETCURSEL) : 0);
        const LRESULT length = Send(id, isList ? LB_GETTEXTLEN : WM_GETTEXTLENGTH, index);
        if (length <= 0) return {};
        std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
        Send(id, isList ? LB_GETTEXT : WM_GETTEXT, isList ? index : text.size(), reinterpret_cast<LPARAM>(text.data()));
        text.resize(static_cast<std::size_t>(length));
        return Narrow(text);
    }
    void SetCheck(std::uint32_t id, int state) override { Send(id, BM_SETCHECK, static_cast<WPARAM>(state)); }
    int GetCheck(std::uint32_t id) const override { return static_cast<int>(Send(id, BM_GETCHECK)); }
    // The focus does not stay on a control that takes no input any more.
    void Enable(std::uint32_t id, bool enabled) override {
        const HWND control = Get(id);
        if (!enabled && GetFocus() == control) SendMessageW(m_hWnd, WM_NEXTDLGCTL, 0, FALSE);
        EnableWindow(control, enabled ? TRUE : FALSE);
        EnableMenuItem(GetMenu(m_hWnd), id, MF_BYCOMMAND | (enabled ? MF_ENABLED : MF_GRAYED));
    }
    void AddEntry(std::uint32_t id, std::string_view text) override {
        Send(id, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Widen(text).c_str()));
    }
    void AddItem(std::uint32_t id, std::string_view text, std::uint32_t image, bool selected) override {
        std::wstring wide = Widen(text);
        LVITEMW item{};
        item.mask = LVIF_TEXT | LVIF_IMAGE;
        item.iItem = ListView_GetItemCount(Get(id));
        item.iImage = static_cast<int>(image);
        item.pszText = wide.data();
        Send(id, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
        SelectItem(id, static_cast<std::size_t>(item.iItem), selected);
    }
    void SelectItem(std::uint32_t id, std::size_t index, bool selected) override {
        ListView_SetItemState(Get(id), static_cast<int>(index), selected ? LVIS_SELECTED : 0U, LVIS_SELECTED);
    }
    bool IsItemSelected(std::uint32_t id, std::size_t index) const override {
        return ListView_GetItemState(Get(id), static_cast<int>(index), LVIS_SELECTED) != 0;
    }

protected:
    void Run() override {
        // The template that the system wants: the frame alone. Controls are added when the font is known.
        struct alignas(4) CFrame {
            DLGTEMPLATE m_head;
            WORD m_nothing[3];  // no menu, the usual class, no title
        };
        CFrame frame{};
        frame.m_head.style = DS_MODALFRAME | WS_POPUP | WS_CAPTION | WS_SYSMENU;
        const HWND owner = m_desk.GetInnermost();
        if (owner == nullptr) frame.m_head.style |= WS_MINIMIZEBOX;
        DialogBoxIndirectParamW(GetModuleHandleW(nullptr), &frame.m_head, owner, OnSystemMessage,
                                reinterpret_cast<LPARAM>(this));
    }
    void Close() override { EndDialog(m_hWnd, 0); }

private:
    struct CControl {
        const CControlTemplate* m_pTemplate;
        HWND m_hWnd;

        EControlKind GetKind() const { return m_pTemplate->m_kind; }
    };
    struct CPosted {
        std::uint32_t m_nMessage;
        std::uint32_t m_wParam;
    };

    HWND Get(std::uint32_t id) const { return GetDlgItem(m_hWnd, static_cast<int>(id)); }
    LRESULT Send(std::uint32_t id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageW(Get(id), message, wParam, lParam);
    }
    // A menu entry that is no control counts as a button.
    EControlKind KindOf(std::uint32_t id) const {
        for (const CControl& control : m_controls) {
            if (control.m_pTemplate->m_id == id) return control.GetKind();
        }
        return EControlKind::kButton;
    }

    static INT_PTR CALLBACK OnSystemMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            SetWindowLongPtrW(window, GWLP_USERDATA, lParam);
            reinterpret_cast<CWin32Window*>(lParam)->Create(window);
            return FALSE;  // the focus is set
        }
        auto* const self = reinterpret_cast<CWin32Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        return self != nullptr && self->Handle(message, wParam, lParam) ? TRUE : FALSE;
    }

    bool Handle(UINT message, WPARAM wParam, LPARAM lParam) {
        switch (message) {
            case WM_COMMAND:
                return OnCommand(LOWORD(wParam), lParam == 0 ? BN_CLICKED : HIWORD(wParam));
            case WM_NOTIFY:
                return OnNotify(*reinterpret_cast<const NMHDR*>(lParam));
            case WM_CLOSE:
                TellClicked(IDCANCEL);
                return true;
            case WM_HELP:
                OnHelpKey();
                return true;
            case WM_SETCURSOR:
                if (!m_desk.m_bWaiting) return false;
                SetCursor(LoadCursorForm(true));
                SetWindowLongPtrW(m_hWnd, DWLP_MSGRESULT, TRUE);
                return true;
            case WM_DPICHANGED: {
                const auto* const wanted = reinterpret_cast<const RECT*>(lParam);
                ChangeFont(HIWORD(wParam));
                Place();
                MoveTo(wanted->left, wanted->top);
                return true;
            }
            case WM_DESTROY: {
                const std::lock_guard lock(m_mutex);
                m_hTarget = nullptr;
                std::erase(m_desk.m_windows, m_hWnd);
                return true;
            }
            default:
                if (message < WM_APP || message >= kPostedEnd) return false;
                Tell(&CDialogEvents::OnMessage, message - kPostedBase, static_cast<std::uint32_t>(wParam));
                return true;
        }
    }

    void Create(HWND window) {
        m_hWnd = window;
        m_desk.m_windows.push_back(window);
        SwitchOwnScalingOff(window);
        SetWindowTextW(window, Widen(m_template.m_title).c_str());
        const auto setIcon = [window](WPARAM which, int metric) {
            SendMessageW(window, WM_SETICON, which,
                         reinterpret_cast<LPARAM>(LoadProgramIcon(GetSystemMetrics(metric))));
        };
        setIcon(ICON_BIG, SM_CXICON);
        setIcon(ICON_SMALL, SM_CXSMICON);
        for (const CControlTemplate& control : m_template.m_controls)
            AddControl(control);
        AddMenu();
        ChangeFont(DpiOf(window));
        Place();
        MoveToMiddle();
        {
            const std::lock_guard lock(m_mutex);
            m_hTarget = window;
            for (const CPosted& posted : m_early)
                PostMessageW(window, kPostedBase + posted.m_nMessage, posted.m_wParam, 0);
        }
        Tell(&CDialogEvents::OnInitDialog);
        if (HasEnded()) return;
        const HWND first = GetNextDlgTabItem(window, nullptr, FALSE);
        if (first != nullptr) SetFocus(first);
    }

    void MoveTo(int x, int y) { SetWindowPos(m_hWnd, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE); }

    // Over its owner, or in the middle of the screen.
    void MoveToMiddle() {
        const HWND owner = GetWindow(m_hWnd, GW_OWNER);
        const RECT screen = WorkAreaOf(owner != nullptr ? owner : m_hWnd);
        RECT around = screen;
        RECT own{};
        GetWindowRect(m_hWnd, &own);
        if (owner != nullptr && IsWindowVisible(owner)) GetWindowRect(owner, &around);
        const auto inMiddle = [](LONG from, LONG to, LONG size, LONG low, LONG high) {
            return static_cast<int>(std::max(low, std::min(from + (to - from - size) / 2, high - size)));
        };
        MoveTo(inMiddle(around.left, around.right, own.right - own.left, screen.left, screen.right),
               inMiddle(around.top, around.bottom, own.bottom - own.top, screen.top, screen.bottom));
    }

    void AddControl(const CControlTemplate& control) {
        const CForm& form = kForms[static_cast<int>(control.m_kind)];
        const HWND window = CreateWindowExW(form.m_dwExtended, form.m_class, Widen(control.m_text).c_str(),
                                            WS_CHILD | WS_VISIBLE | form.m_dwStyle, 0, 0, 0, 0, m_hWnd,
                                            reinterpret_cast<HMENU>(static_cast<UINT_PTR>(control.m_id)),
                                            GetModuleHandleW(nullptr), nullptr);
        m_controls.push_back({&control, window});
        if (control.m_kind == EControlKind::kDefaultButton) SendMessageW(m_hWnd, DM_SETDEFID, control.m_id, 0);
        for (const std::string_view entry : control.m_entries)
            SendMessageW(window, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Widen(entry).c_str()));
        if (control.m_kind == EControlKind::kItemList) {
            ListView_SetExtendedListViewStyle(window, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
            LVCOLUMNW column{};
            ListView_InsertColumn(window, 0, &column);
        }
    }

    void AddMenu() {
        if (m_template.m_menu.empty()) return;
        const HMENU menu = CreateMenu();
        for (const CMenuPopup& popup : m_template.m_menu) {
            const HMENU entries = CreatePopupMenu();
            for (const CMenuEntry& entry : popup.m_entries)
                AppendMenuW(entries, entry.m_id == 0 ? MF_SEPARATOR : MF_STRING, entry.m_id,
                            Widen(entry.m_text).c_str());
            AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(entries), Widen(popup.m_text).c_str());
        }
        SetMenu(m_hWnd, menu);  // the window destroys it
    }

    void ChangeFont(int dpi) {
        m_nDpi = dpi;
        const HFONT before = m_hFont;
        m_hFont = MakeMessageFont(dpi);
        for (const CControl& control : m_controls) {
            SendMessageW(control.m_hWnd, WM_SETFONT, reinterpret_cast<WPARAM>(m_hFont), FALSE);
            if (control.GetKind() == EControlKind::kIcon) {
                SendMessageW(control.m_hWnd, STM_SETICON,
                             reinterpret_cast<WPARAM>(LoadProgramIcon(32 * dpi / kPlainDpi)), 0);
            } else if (control.GetKind() == EControlKind::kItemList) {
                const HIMAGELIST images = MakeDriveImages(std::max(1, (dpi + kPlainDpi / 2) / kPlainDpi));
                ListView_SetImageList(control.m_hWnd, images, LVSIL_SMALL);
                DestroyImages(m_hImages);
                m_hImages = images;
            }
        }
        if (before != nullptr) DeleteObject(before);
    }

    // Units as the font gives them, larger where a text would be cut off.
    void Place() {
        const HDC context = GetDC(m_hWnd);
        const HGDIOBJ before = SelectObject(context, m_hFont);
        TEXTMETRICW metrics{};
        GetTextMetricsW(context, &metrics);
        double unitX = TextSize(context, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz").cx / 52.0 / 4;
        double unitY = metrics.tmHeight / 8.0;
        for (const CControlTemplate& control : m_template.m_controls) {
            const CForm& form = kForms[static_cast<int>(control.m_kind)];
            const SIZE text = TextSize(context, control.m_text.empty() ? "Xg" : control.m_text);
            const auto scaled = [this](int dots) { return MulDiv(dots, m_nDpi, kPlainDpi); };
            const double width = text.cx + scaled(form.m_nBeside);
            const double height = std::max<double>(text.cy + scaled(form.m_nAbove), scaled(form.m_nLowest));
            if (form.m_nBeside != kAnySize) unitX = std::max(unitX, width / control.m_place.m_nWidth);
            if (form.m_nAbove != kAnySize) unitY = std::max(unitY, height / control.m_place.m_nHeight);
        }
        SelectObject(context, before);
        ReleaseDC(m_hWnd, context);
        const auto x = [unitX](int units) { return static_cast<int>(std::lround(units * unitX)); };
        const auto y = [unitY](int units) { return static_cast<int>(std::lround(units * unitY)); };
        constexpr int kListLines = 8;  // of a combo box, with its list open
        for (const CControl& control : m_controls) {
            const CPlace& place = control.m_pTemplate->m_place;
            const bool isCombo = control.GetKind() == EControlKind::kCombo;
            MoveWindow(control.m_hWnd, x(place.m_nLeft), y(place.m_nTop), x(place.m_nWidth),
                       y(place.m_nHeight) + (isCombo ? kListLines * metrics.tmHeight : 0), TRUE);
            if (control.GetKind() == EControlKind::kItemList) {
                RECT inside{};
                GetClientRect(control.m_hWnd, &inside);
                ListView_SetColumnWidth(control.m_hWnd, 0, inside.right - GetSystemMetrics(SM_CXVSCROLL));
            }
        }
        const SIZE whole =
            WindowSizeOf({x(m_template.m_nWidth), y(m_template.m_nHeight)}, m_hWnd, !m_template.m_menu.empty(), m_nDpi);
        SetWindowPos(m_hWnd, nullptr, 0, 0, whole.cx, whole.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }

    void TellControl(std::uint32_t id, EControlEvent event) { Tell(&CDialogEvents::OnControl, id, event); }
    void TellClicked(std::uint32_t id) { TellControl(id, EControlEvent::kClicked); }

    bool OnCommand(std::uint32_t id, unsigned code) {
        switch (KindOf(id)) {
            case EControlKind::kCombo:
                if (code == CBN_EDITCHANGE || code == CBN_CLOSEUP) TellControl(id, EControlEvent::kEdited);
                if (code == CBN_SELCHANGE) TellControl(id, EControlEvent::kSelected);
                return true;
            case EControlKind::kSortedList:
                if (code == LBN_SELCHANGE) TellControl(id, EControlEvent::kSelected);
                return true;
            case EControlKind::kButton:
            case EControlKind::kDefaultButton:
            case EControlKind::kCheck:
            case EControlKind::kThreeState:
                // Enter reaches a disabled default button, too.
                if (code == BN_CLICKED && (Get(id) == nullptr || IsWindowEnabled(Get(id)))) TellClicked(id);
                return true;
            default:
                return false;
        }
    }

    bool OnNotify(const NMHDR& notice) {
        if (notice.code != LVN_ITEMCHANGED) return false;
        const auto& change = reinterpret_cast<const NMLISTVIEW&>(notice);
        const bool isSelection =
            (change.uChanged & LVIF_STATE) != 0 && ((change.uOldState ^ change.uNewState) & LVIS_SELECTED) != 0;
        if (isSelection) TellControl(static_cast<std::uint32_t>(notice.idFrom), EControlEvent::kSelected);
        return true;
    }

    // F1 comes here from whichever control has the focus.
    void OnHelpKey() {
        for (const CMenuPopup& popup : m_template.m_menu) {
            for (const CMenuEntry& entry : popup.m_entries) {
                if (entry.m_text.ends_with("\tF1")) TellClicked(entry.m_id);
            }
        }
    }

    CDesk& m_desk;
    HWND m_hWnd = nullptr;
    HFONT m_hFont = nullptr;
    HIMAGELIST m_hImages = nullptr;
    int m_nDpi = 0;
    std::vector<CControl> m_controls;  // in the order of the template
    std::mutex m_mutex;                // guards the next two: any thread may post
    std::vector<CPosted> m_early;
    HWND m_hTarget = nullptr;  // m_hWnd while the window can be posted to
};

}  // namespace

std::unique_ptr<CDialogWindow> MakeDialogWindow(CDesk& desk, const CDialogTemplate& dialog, CDialogEvents& events) {
    return std::make_unique<CWin32Window>(desk, dialog, events);
}

}  // namespace delvane
