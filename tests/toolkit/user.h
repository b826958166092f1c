// What a user does with the windows of a toolkit, and sees of them. Each window system has an implementation.
#pragma once

#include <vector>

#include "platform/toolkit.h"

namespace delvane::user {

CToolkit& GetToolkit();  // the one of this process, on real windows

// All that follows is about the dialog that is open, the innermost one. Keys go to the control that has the focus.
enum class EKey { kReturn, kEscape, kF1 };
void WaitForWindow();  // until it has the focus
void Press(EKey key);
void Type(std::string_view text);
void Focus(std::uint32_t id);
bool HasFocus(std::uint32_t id);
void Click(std::uint32_t id);
void ClickItem(std::uint32_t id, int index, bool withControl);
void CloseBox();
void Choose(std::uint32_t menuEntry);
std::size_t CountEntries(std::size_t popup);
bool IsMenuEntryEnabled(std::uint32_t menuEntry);
void PickSuggestion(std::uint32_t combo, int index);  // from its list
int CountSuggestions(std::uint32_t combo);
bool HasPictures(std::uint32_t list);

// Where the controls lie in the window, in the order of their template or any other.
struct CArea {
    int m_nLeft, m_nTop, m_nRight, m_nBottom;
};
struct CPlaced {
    CString m_strWhat;
    CArea m_area;
    bool m_bGroup;  // which lies around others
    bool m_bFits;   // its text is not cut off
};
std::vector<CPlaced> GetPlaces(CArea& window);

// The sizes of fonts or screens that a user may have. SetScale is called before the dialog is made and again when it is
// open, since the systems differ in when they take it.
std::vector<int> GetScales();
void SetScale(int scale);

// The next message box gets that answer.
void AnswerBox(std::uint32_t button);
bool HasWaitCursor();
// The splash, empty where there is none.
CArea GetSplash();

}  // namespace delvane::user
