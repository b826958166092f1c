// How a template becomes a window:
//
//     the frame     RunModal hands the system a template without controls. WM_INITDIALOG makes them in the order of
//                   ours, which is that of Tab; the system's own dialog units would be those of another font
//     the units     with each new scaling the font is made anew. A unit is what the font gives, and grows until every
//                   control has room for its text: so all places grow alike, and nothing is cut off
//     the place     over the owner, else in the middle of the screen, and never beyond it
//     the events    WM_COMMAND and WM_NOTIFY become calls of CDialogEvents by the kind of the control. After End none
//                   is told any more: the system still sends some while the window goes
//     posted        any thread puts a message into m_posted and posts the window a sign, one sign a message. What was
//                   posted before the window was there gets its signs when it is
#include "platform/win32/windows/dialog_window.h"

#include <algorithm>
#include <cmath>

#include "platform/win32/wide.h"
#include "platform/win32/windows/pictures.h"
#include "platform/win32/windows/scaling.h"

namespace delvane {
namespace {

// Says that a message waits in m_posted. The small numbers behind WM_USER have a meaning of their own in dialogs, so
// they never travel as themselves.
constexpr UINT kMsgWaiting = WM_APP + 1;

// How the controls of a kind are made.
struct CForm {
    const wchar_t* m_class;
    DWORD m_dwStyle;
    DWORD m_dwExtended;
};

CForm FormOf(EControlKind kind) {
    switch (kind) {
        case EControlKind::kLabel:
            return {L"STATIC", SS_LEFT, 0};
        case EControlKind::kGroup:
            return {L"BUTTON", BS_GROUPBOX, 0};
        case EControlKind::kIcon:
            return {L"STATIC", SS_ICON | SS_CENTERIMAGE, 0};
        case EControlKind::kText:
            return {L"EDIT", ES_READONLY | ES_AUTOHSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE};
        case EControlKind::kButton:
            return {L"BUTTON", BS_PUSHBUTTON | WS_TABSTOP, 0};
        case EControlKind::kDefaultButton:
            return {L"BUTTON", BS_DEFPUSHBUTTON | WS_TABSTOP, 0};
        case EControlKind::kCheck:
            return {L"BUTTON", BS_AUTOCHECKBOX | WS_TABSTOP, 0};
        case EControlKind::kThreeState:
            return {L"BUTTON", BS_AUTO3STATE | WS_TABSTOP, 0};
        case EControlKind::kCombo:
            return {L"COMBOBOX", CBS_DROPDOWN | CBS_AUTOHSCROLL | WS_VSCROLL | WS_TABSTOP, 0};
        case EControlKind::kSortedList:
            return {L"LISTBOX", LBS_SORT | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL | WS_TABSTOP,
                    WS_EX_CLIENTEDGE};
        case EControlKind::kItemList:
            return {WC_LISTVIEWW, LVS_REPORT | LVS_NOCOLUMNHEADER | LVS_SHOWSELALWAYS | WS_TABSTOP, WS_EX_CLIENTEDGE};
    }
    return {};
}

std::wstring TextOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

// The size of a text as labels and buttons draw it: lines, and mnemonics that take no room.
SIZE TextSize(HDC context, std::string_view text) {
    const std::wstring wide = Widen(text);
    RECT area{};
    DrawTextW(context, wide.data(), static_cast<int>(wide.size()), &area, DT_CALCRECT | DT_LEFT);
    return {area.right, area.bottom};
}

}  // namespace

CWin32Window::CWin32Window(CDesk& desk, const CDialogTemplate& dialog, CDialogEvents& events)
    : m_desk(desk), m_template(dialog), m_events(events) {}

CWin32Window::~CWin32Window() {
    if (m_hFont != nullptr) DeleteObject(m_hFont);
    DestroyImages(m_hImages);
}

void CWin32Window::PostMessage(std::uint32_t message, std::uint32_t wParam, std::uint32_t lParam) {
    const std::lock_guard lock(m_mutex);
    m_posted.push_back({message, wParam, lParam});
    if (m_hTarget != nullptr) PostMessageW(m_hTarget, kMsgWaiting, 0, 0);
}

std::uint32_t CWin32Window::RunModal() {
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
    return m_nResult;
}

void CWin32Window::End(std::uint32_t result) {
    m_bEnded = true;
    m_nResult = result;
    EndDialog(m_hWnd, static_cast<INT_PTR>(result));
}

INT_PTR CALLBACK CWin32Window::OnSystemMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, GWLP_USERDATA, lParam);
        reinterpret_cast<CWin32Window*>(lParam)->Create(window);
        return FALSE;  // the focus is set
    }
    auto* const self = reinterpret_cast<CWin32Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return self == nullptr ? FALSE : self->Handle(message, wParam, lParam);
}

INT_PTR CWin32Window::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            return OnCommand(LOWORD(wParam), lParam == 0 ? BN_CLICKED : HIWORD(wParam)) ? TRUE : FALSE;
        case WM_NOTIFY:
            return OnNotify(*reinterpret_cast<const NMHDR*>(lParam)) ? TRUE : FALSE;
        case kMsgWaiting:
            OnPosted();
            return TRUE;
        case WM_CLOSE:
            Tell(IDCANCEL, EControlEvent::kClicked);
            return TRUE;
        case WM_HELP:
            OnHelpKey();
            return TRUE;
        case WM_INITMENUPOPUP:
            if (HIWORD(lParam) == 0) m_events.OnMenuOpening(LOWORD(lParam));
            return TRUE;
        case WM_SETCURSOR:
            if (m_desk.m_nWaiting == 0) return FALSE;
            SetCursor(LoadCursorW(nullptr, MAKEINTRESOURCEW(32514)));  // IDC_WAIT
            SetWindowLongPtrW(m_hWnd, DWLP_MSGRESULT, TRUE);
            return TRUE;
        case WM_DPICHANGED: {
            const auto* const wanted = reinterpret_cast<const RECT*>(lParam);
            ChangeFont(HIWORD(wParam));
            Place();
            SetWindowPos(m_hWnd, nullptr, wanted->left, wanted->top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
            return TRUE;
        }
        case WM_DESTROY: {
            const std::lock_guard lock(m_mutex);
            m_hTarget = nullptr;
            std::erase(m_desk.m_windows, m_hWnd);
            return TRUE;
        }
        default:
            return FALSE;
    }
}

void CWin32Window::Create(HWND window) {
    m_hWnd = window;
    m_desk.m_windows.push_back(window);
    SwitchOwnScalingOff(window);
    SetTitle(m_template.m_title);
    const HWND owner = GetWindow(window, GW_OWNER);
    const auto setIcon = [window](WPARAM which, int metric) {
        SendMessageW(window, WM_SETICON, which, reinterpret_cast<LPARAM>(LoadProgramIcon(GetSystemMetrics(metric))));
    };
    setIcon(ICON_BIG, SM_CXICON);
    setIcon(ICON_SMALL, SM_CXSMICON);
    m_controls.reserve(m_template.m_controls.size());
    for (const CControlTemplate& control : m_template.m_controls)
        AddControl(control);
    AddMenu();
    ChangeFont(DpiOf(window));
    Place();
    // Over its owner, or in the middle of the screen.
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(owner != nullptr ? owner : window, MONITOR_DEFAULTTONEAREST), &monitor);
    RECT around = monitor.rcWork;
    RECT own{};
    GetWindowRect(window, &own);
    if (owner != nullptr && IsWindowVisible(owner)) GetWindowRect(owner, &around);
    const auto inMiddle = [](LONG from, LONG to, LONG size, LONG low, LONG high) {
        return static_cast<int>(std::max(low, std::min(from + (to - from - size) / 2, high - size)));
    };
    const int x = inMiddle(around.left, around.right, own.right - own.left, monitor.rcWork.left, monitor.rcWork.right);
    const int y = inMiddle(around.top, around.bottom, own.bottom - own.top, monitor.rcWork.top, monitor.rcWork.bottom);
    SetWindowPos(window, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    {
        const std::lock_guard lock(m_mutex);
        m_hTarget = window;
        for (std::size_t i = 0; i < m_posted.size(); ++i)
            PostMessageW(window, kMsgWaiting, 0, 0);
    }
    m_events.OnInit();
    if (m_bEnded) return;
    const HWND first = GetNextDlgTabItem(window, nullptr, FALSE);
    if (first != nullptr) SetFocus(first);
}

void CWin32Window::AddControl(const CControlTemplate& control) {
    const CForm form = FormOf(control.m_kind);
    const HWND window = CreateWindowExW(
        form.m_dwExtended, form.m_class, Widen(control.m_text).c_str(), WS_CHILD | WS_VISIBLE | form.m_dwStyle, 0, 0, 0,
        0, m_hWnd, reinterpret_cast<HMENU>(static_cast<UINT_PTR>(control.m_id)), GetModuleHandleW(nullptr), nullptr);
    if (control.m_id != 0) m_byId[control.m_id] = m_controls.size();
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

void CWin32Window::AddMenu() {
    if (m_template.m_menu.empty()) return;
    m_hMenu = CreateMenu();
    for (const CMenuPopup& popup : m_template.m_menu) {
        const HMENU entries = CreatePopupMenu();
        for (const CMenuEntry& entry : popup.m_entries)
            AppendMenuW(entries, entry.m_id == 0 ? MF_SEPARATOR : MF_STRING, entry.m_id, Widen(entry.m_text).c_str());
        AppendMenuW(m_hMenu, MF_POPUP, reinterpret_cast<UINT_PTR>(entries), Widen(popup.m_text).c_str());
    }
    SetMenu(m_hWnd, m_hMenu);  // the window destroys it
}

void CWin32Window::ChangeFont(int dpi) {
    m_nDpi = dpi;
    const HFONT before = m_hFont;
    m_hFont = MakeMessageFont(dpi);
    const int factor = std::max(1, (dpi + kPlainDpi / 2) / kPlainDpi);
    for (const CControl& control : m_controls) {
        SendMessageW(control.m_hWnd, WM_SETFONT, reinterpret_cast<WPARAM>(m_hFont), FALSE);
        if (control.m_pTemplate->m_kind == EControlKind::kIcon) {
            SendMessageW(control.m_hWnd, STM_SETICON, reinterpret_cast<WPARAM>(LoadProgramIcon(32 * dpi / kPlainDpi)),
                         0);
        } else if (control.m_pTemplate->m_kind == EControlKind::kItemList) {
            const HIMAGELIST images = MakeDriveImages(factor);
            ListView_SetImageList(control.m_hWnd, images, LVSIL_SMALL);
            DestroyImages(m_hImages);
            m_hImages = images;
        }
    }
    if (before != nullptr) DeleteObject(before);
}

// What the control needs so that nothing of its text is cut off; no size where it has none.
SIZE CWin32Window::GetWantedSize(const CControl& control, HDC context) const {
    const auto scaled = [this](int dots) { return static_cast<LONG>(MulDiv(dots, m_nDpi, kPlainDpi)); };
    SIZE size = TextSize(context, control.m_pTemplate->m_text.empty() ? "Xg" : control.m_pTemplate->m_text);
    switch (control.m_pTemplate->m_kind) {
        case EControlKind::kLabel:
            return size;
        case EControlKind::kButton:
        case EControlKind::kDefaultButton:
            return {size.cx + scaled(16), size.cy + scaled(8)};
        case EControlKind::kCheck:
        case EControlKind::kThreeState:
            return {size.cx + scaled(21), std::max(size.cy, scaled(13))};
        case EControlKind::kText:
        case EControlKind::kCombo:
            return {0, size.cy + scaled(6)};
        default:
            return {};
    }
}

// Units as the font gives them, larger where a text would be cut off.
void CWin32Window::Place() {
    const HDC context = GetDC(m_hWnd);
    const HGDIOBJ before = SelectObject(context, m_hFont);
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    double unitX = TextSize(context, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz").cx / 52.0 / 4;
    double unitY = metrics.tmHeight / 8.0;
    for (const CControl& control : m_controls) {
        const SIZE wanted = GetWantedSize(control, context);
        unitX = std::max(unitX, wanted.cx / static_cast<double>(control.m_pTemplate->m_place.m_nWidth));
        unitY = std::max(unitY, wanted.cy / static_cast<double>(control.m_pTemplate->m_place.m_nHeight));
    }
    SelectObject(context, before);
    ReleaseDC(m_hWnd, context);
    const auto x = [unitX](int units) { return static_cast<int>(std::lround(units * unitX)); };
    const auto y = [unitY](int units) { return static_cast<int>(std::lround(units * unitY)); };
    constexpr int kListLines = 8;  // of a combo box, with its list open
    for (const CControl& control : m_controls) {
        const CPlace& place = control.m_pTemplate->m_place;
        const bool isCombo = control.m_pTemplate->m_kind == EControlKind::kCombo;
        MoveWindow(control.m_hWnd, x(place.m_nLeft), y(place.m_nTop), x(place.m_nWidth),
                   y(place.m_nHeight) + (isCombo ? kListLines * metrics.tmHeight : 0), TRUE);
        if (control.m_pTemplate->m_kind == EControlKind::kItemList) {
            RECT inside{};
            GetClientRect(control.m_hWnd, &inside);
            ListView_SetColumnWidth(control.m_hWnd, 0, inside.right - GetSystemMetrics(SM_CXVSCROLL));
        }
    }
    const SIZE whole =
        WindowSizeOf({x(m_template.m_nWidth), y(m_template.m_nHeight)}, m_hWnd, !m_template.m_menu.empty(), m_nDpi);
    SetWindowPos(m_hWnd, nullptr, 0, 0, whole.cx, whole.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void CWin32Window::Tell(std::uint32_t id, EControlEvent event) {
    if (!m_bEnded) m_events.OnControl(id, event);
}

bool CWin32Window::OnCommand(std::uint32_t id, unsigned code) {
    const auto found = m_byId.find(id);
    const bool isControl = found != m_byId.end();
    const EControlKind kind = isControl ? m_controls[found->second].m_pTemplate->m_kind : EControlKind::kButton;
    switch (kind) {
        case EControlKind::kCombo:
            if (code == CBN_EDITCHANGE) Tell(id, EControlEvent::kEdited);
            if (code == CBN_SELCHANGE) Tell(id, EControlEvent::kSelected);
            if (code == CBN_CLOSEUP) Tell(id, EControlEvent::kListClosed);
            return true;
        case EControlKind::kSortedList:
            if (code == LBN_SELCHANGE) Tell(id, EControlEvent::kSelected);
            return true;
        case EControlKind::kButton:
        case EControlKind::kDefaultButton:
        case EControlKind::kCheck:
        case EControlKind::kThreeState:
            // Enter reaches a disabled default button, too.
            if (code == BN_CLICKED && (!isControl || IsWindowEnabled(Get(id)))) Tell(id, EControlEvent::kClicked);
            return true;
        default:
            return false;
    }
}

bool CWin32Window::OnNotify(const NMHDR& notice) {
    if (notice.code != LVN_ITEMCHANGED) return false;
    const auto& change = reinterpret_cast<const NMLISTVIEW&>(notice);
    const bool isSelection =
        (change.uChanged & LVIF_STATE) != 0 && ((change.uOldState ^ change.uNewState) & LVIS_SELECTED) != 0;
    if (isSelection) Tell(static_cast<std::uint32_t>(notice.idFrom), EControlEvent::kSelected);
    return true;
}

// F1 comes here from whichever control has the focus.
void CWin32Window::OnHelpKey() {
    for (const CMenuPopup& popup : m_template.m_menu) {
        for (const CMenuEntry& entry : popup.m_entries) {
            if (entry.m_text.ends_with("\tF1")) Tell(entry.m_id, EControlEvent::kClicked);
        }
    }
}

void CWin32Window::OnPosted() {
    CPosted posted{};
    {
        const std::lock_guard lock(m_mutex);
        if (m_posted.empty()) return;
        posted = m_posted.front();
        m_posted.pop_front();
    }
    if (!m_bEnded) m_events.OnMessage(posted.m_nMessage, posted.m_wParam, posted.m_lParam);
}

void CWin32Window::SetTitle(std::string_view title) { SetWindowTextW(m_hWnd, Widen(title).c_str()); }

void CWin32Window::SetText(std::uint32_t id, std::string_view text) {
    SetWindowTextW(Get(id), Widen(text).c_str());
    if (GetControl(id).m_pTemplate->m_kind == EControlKind::kText) SendMessageW(Get(id), EM_SETSEL, 0, 0);
}

CString CWin32Window::GetText(std::uint32_t id) const {
    const CControl& control = GetControl(id);
    if (control.m_pTemplate->m_kind != EControlKind::kSortedList) return Narrow(TextOf(control.m_hWnd));
    const LRESULT index = SendMessageW(control.m_hWnd, LB_GETCURSEL, 0, 0);
    const LRESULT length =
        index == LB_ERR ? LB_ERR : SendMessageW(control.m_hWnd, LB_GETTEXTLEN, static_cast<WPARAM>(index), 0);
    if (length == LB_ERR) return {};
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    SendMessageW(control.m_hWnd, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return Narrow(text);
}

void CWin32Window::SetCheck(std::uint32_t id, int state) {
    SendMessageW(Get(id), BM_SETCHECK, static_cast<WPARAM>(state), 0);
}

int CWin32Window::GetCheck(std::uint32_t id) const {
    return static_cast<int>(SendMessageW(Get(id), BM_GETCHECK, 0, 0));
}

// The focus does not stay on a control that takes no input any more.
void CWin32Window::Enable(std::uint32_t id, bool enabled) {
    const HWND control = Get(id);
    if (!enabled && GetFocus() == control) SendMessageW(m_hWnd, WM_NEXTDLGCTL, 0, FALSE);
    EnableWindow(control, enabled ? TRUE : FALSE);
}

void CWin32Window::EnableMenuEntry(std::uint32_t id, bool enabled) {
    EnableMenuItem(m_hMenu, id, MF_BYCOMMAND | (enabled ? MF_ENABLED : MF_GRAYED));
}

void CWin32Window::AddEntry(std::uint32_t id, std::string_view text) {
    SendMessageW(Get(id), LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Widen(text).c_str()));
}

void CWin32Window::AddItem(std::uint32_t id, std::string_view text, std::uint32_t image, bool selected) {
    std::wstring wide = Widen(text);
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_IMAGE;
    item.iItem = ListView_GetItemCount(Get(id));
    item.iImage = static_cast<int>(image);
    item.pszText = wide.data();
    SendMessageW(Get(id), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    SelectItem(id, static_cast<std::size_t>(item.iItem), selected);
}

void CWin32Window::SelectItem(std::uint32_t id, std::size_t index, bool selected) {
    ListView_SetItemState(Get(id), static_cast<int>(index), selected ? LVIS_SELECTED : 0U, LVIS_SELECTED);
}

bool CWin32Window::IsItemSelected(std::uint32_t id, std::size_t index) const {
    return ListView_GetItemState(Get(id), static_cast<int>(index), LVIS_SELECTED) != 0;
}

}  // namespace delvane
