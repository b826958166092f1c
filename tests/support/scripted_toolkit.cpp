#include "tests/support/scripted_toolkit.h"

#include <algorithm>
#include <chrono>

namespace delvane {

CScriptedWindow::CScriptedWindow(const CDialogTemplate& dialog, CDialogEvents& events, std::deque<CStep> script)
    : CDialogWindow(dialog, events), m_strTitle(dialog.m_title), m_script(std::move(script)) {
    for (const CControlTemplate& control : dialog.m_controls) {
        switch (control.m_kind) {
            case EControlKind::kCheck:
            case EControlKind::kThreeState:
                m_checks[control.m_id] = 0;
                break;
            case EControlKind::kCombo:
                m_entries[control.m_id].assign(control.m_entries.begin(), control.m_entries.end());
                m_texts[control.m_id];
                break;
            case EControlKind::kSortedList:
                m_entries[control.m_id];
                m_texts[control.m_id];
                break;
            default:
                m_texts[control.m_id] = control.m_text;
        }
    }
}

void CScriptedWindow::PostMessage(std::uint32_t message, std::uint32_t wParam) {
    const std::lock_guard lock(m_mutex);
    m_messages.push_back({message, wParam});
    m_arrived.notify_one();
}

void CScriptedWindow::Run() {
    Tell(&CDialogEvents::OnInitDialog);
    while (!HasEnded()) {
        std::unique_lock lock(m_mutex);
        if (m_messages.empty() && m_script.empty()) {
            m_arrived.wait_for(lock, std::chrono::seconds(30), [this] { return !m_messages.empty(); });
            if (m_messages.empty()) throw std::logic_error("the dialog waits: " + CString(m_template.m_title));
        }
        if (!m_messages.empty()) {
            const CMessage message = m_messages.front();
            m_messages.pop_front();
            lock.unlock();
            Tell(&CDialogEvents::OnMessage, message.m_nMessage, message.m_wParam);
        } else {
            const CStep step = std::move(m_script.front());
            m_script.pop_front();
            lock.unlock();
            step(*this);
        }
    }
}

void CScriptedWindow::Enable(std::uint32_t id, bool enabled) {
    if (enabled) {
        m_disabled.erase(id);
    } else {
        m_disabled.insert(id);
    }
}

// Lists are sorted.
void CScriptedWindow::AddEntry(std::uint32_t id, std::string_view text) {
    auto& entries = m_entries.at(id);
    const auto isBefore = [](std::string_view a, std::string_view b) { return mbsicmp(a, b) < 0; };
    entries.insert(std::upper_bound(entries.begin(), entries.end(), text, isBefore), CString(text));
}

void CScriptedWindow::AddItem(std::uint32_t, std::string_view text, std::uint32_t image, bool selected) {
    m_items.push_back({CString(text), image, selected});
}

// A change is told, whoever makes it, as a list control does.
void CScriptedWindow::SelectItem(std::uint32_t id, std::size_t index, bool selected) {
    if (m_items.at(index).m_bSelected == selected) return;
    m_items[index].m_bSelected = selected;
    Tell(&CDialogEvents::OnControl, id, EControlEvent::kSelected);
}

bool CScriptedWindow::IsItemSelected(std::uint32_t, std::size_t index) const { return m_items.at(index).m_bSelected; }

void CScriptedWindow::RequireEnabled(std::uint32_t id) const {
    if (!IsEnabled(id)) throw std::logic_error("control " + std::to_string(id) + " is disabled");
}

void CScriptedWindow::Click(std::uint32_t id) {
    RequireEnabled(id);
    const auto isThat = [id](const auto& entry) { return entry.m_id == id; };
    const auto control = std::find_if(m_template.m_controls.begin(), m_template.m_controls.end(), isThat);
    const bool isInMenu = std::any_of(m_template.m_menu.begin(), m_template.m_menu.end(), [&](const CMenuPopup& popup) {
        return std::any_of(popup.m_entries.begin(), popup.m_entries.end(), isThat);
    });
    if (control == m_template.m_controls.end() && !isInMenu) {
        throw std::logic_error("there is no control " + std::to_string(id));
    }
    if (control != m_template.m_controls.end() && m_checks.contains(id)) {
        m_checks[id] = (m_checks[id] + 1) % (control->m_kind == EControlKind::kThreeState ? 3 : 2);
    }
    Tell(&CDialogEvents::OnControl, id, EControlEvent::kClicked);
}

void CScriptedWindow::Type(std::uint32_t id, std::string_view text) {
    RequireEnabled(id);
    SetText(id, text);
    Tell(&CDialogEvents::OnControl, id, EControlEvent::kEdited);
}

// A combo box tells of the selection before its text follows.
void CScriptedWindow::Choose(std::uint32_t id, std::string_view entry) {
    RequireEnabled(id);
    const auto& entries = m_entries.at(id);
    if (std::find(entries.begin(), entries.end(), entry) == entries.end()) {
        throw std::logic_error("there is no entry " + CString(entry));
    }
    const bool isCombo =
        std::any_of(m_template.m_controls.begin(), m_template.m_controls.end(),
                    [id](const auto& control) { return control.m_id == id && control.m_kind == EControlKind::kCombo; });
    if (!isCombo) SetText(id, entry);
    Tell(&CDialogEvents::OnControl, id, EControlEvent::kSelected);
    SetText(id, entry);
}

void CScriptedWindow::ToggleItem(std::uint32_t id, std::size_t index) {
    RequireEnabled(id);
    SelectItem(id, index, !m_items.at(index).m_bSelected);
}

std::unique_ptr<CDialogWindow> CScriptedToolkit::CreateDialog(const CDialogTemplate& dialog, CDialogEvents& events) {
    m_dialogs.push_back(dialog.m_id);
    std::deque<CScriptedWindow::CStep> script;
    auto& scripts = m_scripts[dialog.m_id];
    if (!scripts.empty()) {
        script = std::move(scripts.front());
        scripts.pop_front();
    }
    return std::make_unique<CScriptedWindow>(dialog, events, std::move(script));
}

std::uint32_t CScriptedToolkit::ShowBox(std::string_view text, std::string_view, EMessageKind) {
    m_messages.emplace_back(text);
    if (m_answers.empty()) return IDOK;
    const std::uint32_t answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

}  // namespace delvane
