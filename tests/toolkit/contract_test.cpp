// What every toolkit does, on real windows that are clicked and typed into.
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

#include "resources/dialogs.h"
#include "tests/toolkit/user.h"

namespace delvane {
namespace {

using user::CArea;
using user::EKey;

// A dialog that notes what it is told and ends with OK and Cancel. Its steps are done one after the other, each when
// everything that the one before has set off is handled.
class CRecorder : public CDialogEvents {
public:
    using CStep = std::function<void()>;

    explicit CRecorder(std::uint32_t dialog)
        : m_pWindow(user::GetToolkit().CreateDialog(GetDialogTemplate(dialog), *this)) {}

    void OnInitDialog() override {
        if (m_onInit) m_onInit();
        m_log.clear();
        m_pWindow->PostMessage(kStep, 0);
    }
    void OnControl(std::uint32_t id, EControlEvent event) override {
        m_log.push_back(std::to_string(id) + "/" + std::to_string(static_cast<int>(event)));
        if (event == EControlEvent::kClicked && (id == IDOK || id == IDCANCEL)) m_pWindow->End(id);
    }
    void OnMessage(std::uint32_t message, std::uint32_t wParam) override {
        if (message != kStep) {
            m_log.push_back("message " + std::to_string(message) + " " + std::to_string(wParam));
            if (message == WM_USER) m_pWindow->End(IDOK);
            return;
        }
        if (m_nNext == 0) user::WaitForWindow();
        if (m_nNext == m_steps.size()) return user::Press(EKey::kEscape);
        m_steps[m_nNext++]();
        m_pWindow->PostMessage(kStep, 0);
    }

    // Shows the dialog, takes the steps, and closes it by Esc if it is still there.
    std::uint32_t Run(std::vector<CStep> steps) {
        m_steps = std::move(steps);
        return m_pWindow->RunModal();
    }
    auto Count(const CString& entry) const { return std::count(m_log.begin(), m_log.end(), entry); }

    std::function<void()> m_onInit;
    std::vector<CString> m_log;
    std::unique_ptr<CDialogWindow> m_pWindow;

private:
    static constexpr std::uint32_t kStep = WM_USER + 100;

    std::vector<CStep> m_steps;
    std::size_t m_nNext = 0;
};

bool Overlap(const CArea& a, const CArea& b) {
    return a.m_nLeft < b.m_nRight && b.m_nLeft < a.m_nRight && a.m_nTop < b.m_nBottom && b.m_nTop < a.m_nBottom;
}

TEST(Toolkit, NothingIsCutOffAtAnyScale) {
    for (const std::uint32_t id :
         {IDD_ABOUT, IDD_MAIN, IDD_PROGRESS, IDD_NEW_SNAPSHOT, IDD_LOAD_SNAPSHOT, IDD_OPTIONS}) {
        int widest = 0;
        for (const int scale : user::GetScales()) {
            SCOPED_TRACE("dialog " + std::to_string(id) + " at " + std::to_string(scale));
            user::SetScale(scale);
            CRecorder dialog(id);
            dialog.Run({[&] {
                user::SetScale(scale);
                CArea inside{};
                const std::vector<user::CPlaced> places = user::GetPlaces(inside);
                EXPECT_GT(inside.m_nRight, widest) << "it grows with the scale";
                widest = inside.m_nRight;
                ASSERT_EQ(places.size(), GetDialogTemplate(id).m_controls.size());
                for (const user::CPlaced& placed : places) {
                    const CArea& area = placed.m_area;
                    EXPECT_TRUE(area.m_nLeft >= 0 && area.m_nTop >= 0 && area.m_nRight <= inside.m_nRight &&
                                area.m_nBottom <= inside.m_nBottom)
                        << placed.m_strWhat;
                    EXPECT_TRUE(placed.m_bFits) << placed.m_strWhat;
                    for (const user::CPlaced& other : places) {
                        if (&other == &placed || placed.m_bGroup || other.m_bGroup) continue;
                        EXPECT_FALSE(Overlap(area, other.m_area)) << placed.m_strWhat << ", " << other.m_strWhat;
                    }
                }
            }});
        }
        user::SetScale(user::GetScales().front());
    }
}

TEST(Toolkit, ClicksAndKeysReachTheDialog) {
    CRecorder name(IDD_NEW_SNAPSHOT);
    EXPECT_EQ(name.Run({[] {
                            EXPECT_TRUE(user::HasFocus(IDC_NAME)) << "the first control has the focus";
                            user::Type("a\u00E9");
                        },
                        [&] {
                            EXPECT_EQ(name.m_pWindow->GetText(IDC_NAME), "a\u00E9");
                            user::Click(IDC_COMPARE_AFTER);
                            EXPECT_EQ(name.m_pWindow->GetCheck(IDC_COMPARE_AFTER), 1);
                            name.m_pWindow->Enable(IDOK, false);
                            user::Press(EKey::kReturn);
                        },
                        [&] {
                            EXPECT_EQ(name.m_log.size(), 3U) << "a disabled default button is not pressed";
                            name.m_pWindow->Enable(IDOK, true);
                            user::Press(EKey::kReturn);
                        }}),
              IDOK);
    EXPECT_EQ(name.m_log, (std::vector<CString>{"1011/1", "1011/1", "1012/0", "1/0"}));

    CRecorder main(IDD_MAIN);
    EXPECT_EQ(main.Run({[&] {
                            main.m_pWindow->SetText(1003, "Gr\u00F6\u00DFe (v2.1)");
                            user::Focus(1003);
                            user::Type("x");
                            EXPECT_EQ(main.m_pWindow->GetText(1003), "Gr\u00F6\u00DFe (v2.1)") << "read only";
                            user::Click(IDC_CREATE_BASELINE);
                            user::Press(EKey::kF1);
                        },
                        [&] {
                            main.m_pWindow->Enable(IDC_COMPARE, false);
                            EXPECT_FALSE(user::IsMenuEntryEnabled(IDC_COMPARE));
                            EXPECT_TRUE(user::IsMenuEntryEnabled(IDM_EXIT));
                            EXPECT_EQ(user::CountEntries(0), 9U);
                            user::Choose(IDM_EXIT);
                            user::Focus(1003);
                            user::Press(EKey::kReturn);
                        }}),
              IDOK)
        << "Enter without a default button";
    EXPECT_EQ(main.m_log, (std::vector<CString>{"1004/0", "57670/0", "57665/0", "1/0"}));
    EXPECT_EQ(CRecorder(IDD_LOAD_SNAPSHOT).Run({}), IDCANCEL) << "Esc";
    EXPECT_EQ(CRecorder(IDD_PROGRESS).Run({[] { user::CloseBox(); }}), IDCANCEL);
}

// The chosen entry reaches the edit part only behind the event that tells of it.
TEST(Toolkit, AComboBoxOffersNamesAndTakesOthers) {
    CRecorder name(IDD_NEW_SNAPSHOT);
    CString after;
    name.Run({[&] {
                  EXPECT_EQ(user::CountSuggestions(IDC_NAME), 4);
                  user::PickSuggestion(IDC_NAME, 0);
              },
              [&] { after = name.m_pWindow->GetText(IDC_NAME); }});
    EXPECT_EQ(after, "Pre-Install");
    EXPECT_GE(name.Count("1011/2"), 1);
}

TEST(Toolkit, ListsAndThreeStateBoxes) {
    CRecorder options(IDD_OPTIONS);
    CDialogWindow& window = *options.m_pWindow;
    options.m_onInit = [&] {
        window.AddItem(IDC_DRIVES, "C: [System]", 3, true);
        window.AddItem(IDC_DRIVES, "D:", 5, false);
        EXPECT_TRUE(window.IsItemSelected(IDC_DRIVES, 0));
    };
    options.Run({[&] {
        EXPECT_TRUE(user::HasPictures(IDC_DRIVES));
        user::ClickItem(IDC_DRIVES, 1, true);
        EXPECT_TRUE(window.IsItemSelected(IDC_DRIVES, 0) && window.IsItemSelected(IDC_DRIVES, 1));
        window.SelectItem(IDC_DRIVES, 0, false);
        EXPECT_FALSE(window.IsItemSelected(IDC_DRIVES, 0));
        for (const int state : {1, 2, 0, 1}) {
            user::Click(IDC_HARD_DRIVES);
            EXPECT_EQ(window.GetCheck(IDC_HARD_DRIVES), state);
        }
    }});
    EXPECT_EQ(options.Count("1025/2"), 2);
    EXPECT_EQ(options.Count("1021/0"), 4);

    CRecorder load(IDD_LOAD_SNAPSHOT);
    load.m_onInit = [&] {
        load.m_pWindow->AddEntry(IDC_SNAPSHOTS, "B");
        load.m_pWindow->AddEntry(IDC_SNAPSHOTS, "a");
    };
    load.Run({[&] {
        EXPECT_EQ(load.m_pWindow->GetText(IDC_SNAPSHOTS), "") << "nothing is selected at the start";
        user::ClickItem(IDC_SNAPSHOTS, 0, false);
        EXPECT_EQ(load.m_pWindow->GetText(IDC_SNAPSHOTS), "a") << "sorted without regard to case";
    }});
    EXPECT_EQ(load.m_log, (std::vector<CString>{"1013/2", "2/0"}));
}

TEST(Toolkit, MessagesOfAnotherThreadComeInOrder) {
    CRecorder progress(IDD_PROGRESS);
    std::thread worker([&] {
        for (std::uint32_t i = 0; i < 1000; ++i)
            progress.m_pWindow->PostMessage(WM_USER + 1, i);
        progress.m_pWindow->PostMessage(WM_USER, 0);
    });
    worker.join();  // they wait for a window
    progress.m_onInit = [&] { EXPECT_TRUE(progress.m_log.empty()); };
    // Steps come behind what was posted before them, so the dialog ends before there is one.
    EXPECT_EQ(progress.Run({[] { FAIL() << "the dialog should have ended"; }}), IDOK);
    ASSERT_EQ(progress.m_log.size(), 1001U);
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(progress.m_log[i], "message 1025 " + std::to_string(i));
}

TEST(Toolkit, QuestionsGiveTheirAnswers) {
    const auto answer = [](EMessageKind kind, std::uint32_t button) {
        user::AnswerBox(button);
        return user::GetToolkit().ShowMessage("Line\n<b>two</b>", "A title", kind);
    };
    user::GetToolkit().SetWaiting(true);
    EXPECT_TRUE(user::HasWaitCursor());
    for (const std::uint32_t button : {IDYES, IDNO, IDCANCEL})
        EXPECT_EQ(answer(EMessageKind::kYesNoCancel, button), button);
    EXPECT_EQ(answer(EMessageKind::kYesNo, IDNO), IDNO);
    EXPECT_EQ(answer(EMessageKind::kWarning, IDOK), IDOK);
    EXPECT_TRUE(user::HasWaitCursor()) << "the wait goes on";
    user::GetToolkit().SetWaiting(false);
    EXPECT_FALSE(user::HasWaitCursor());
}

TEST(Toolkit, TheSplashIsThereAtOnceAndGoneAtOnce) {
    user::GetToolkit().ShowSplash();
    const CArea splash = user::GetSplash();
    EXPECT_EQ(splash.m_nRight - splash.m_nLeft, 591);
    EXPECT_EQ(splash.m_nBottom - splash.m_nTop, 368);
    user::GetToolkit().HideSplash();
    EXPECT_EQ(user::GetSplash().m_nRight, 0);
    user::GetToolkit().HideSplash();
}

// A dialog that opens another has the keyboard again when that one ends, however soon it does.
TEST(Toolkit, TheFocusComesBackFromAChild) {
    CRecorder main(IDD_MAIN);
    main.Run({[] { user::Focus(1003); },
              [] {
                  CRecorder child(IDD_PROGRESS);
                  child.m_onInit = [&] { child.m_pWindow->PostMessage(WM_USER, 0); };
                  child.Run({});
              },
              [] {
                  user::WaitForWindow();
                  EXPECT_TRUE(user::HasFocus(1003));
              }});
}

}  // namespace
}  // namespace delvane
