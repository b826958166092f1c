// The Qt module: real widgets, clicked and typed into, on Qt's offscreen platform.
#include <QtCore/QTimer>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialog>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

#include "platform/qt/module.h"
#include "resources/dialogs.h"

extern "C" delvane::CToolkit* DelvaneMakeToolkit();

namespace delvane {
namespace {

// One for all tests: there is one application in a process. It ends before the process does.
std::unique_ptr<CToolkit> g_toolkit;

CToolkit& Toolkit() {
    if (g_toolkit == nullptr) g_toolkit.reset(DelvaneMakeToolkit());
    return *g_toolkit;
}

// A dialog that notes what it is told and ends with OK and Cancel.
class CRecorder : public CDialogEvents {
public:
    explicit CRecorder(std::uint32_t dialog) : m_pWindow(Toolkit().CreateDialog(GetDialogTemplate(dialog), *this)) {}

    void OnInit() override {}
    void OnControl(std::uint32_t id, EControlEvent event) override {
        m_log.push_back(std::to_string(id) + "/" + std::to_string(static_cast<int>(event)));
        if (event == EControlEvent::kClicked && (id == IDOK || id == IDCANCEL)) m_pWindow->End(id);
    }
    void OnMessage(std::uint32_t message, std::uint32_t wParam, std::uint32_t) override {
        m_log.push_back("message " + std::to_string(message) + " " + std::to_string(wParam));
        if (message == WM_USER) m_pWindow->End(IDOK);
    }
    void OnMenuOpening(std::size_t popup) override { m_log.push_back("menu " + std::to_string(popup)); }

    // Shows the dialog, does that with it, and closes it if it is still there.
    std::uint32_t Run(const std::function<void(QWidget&)>& act) {
        QTimer::singleShot(0, [act] {
            QWidget* const window = QApplication::activeModalWidget();
            ASSERT_NE(window, nullptr);
            EXPECT_TRUE(QTest::qWaitForWindowActive(window));
            act(*window);
            if (window->isVisible()) QTest::keyClick(window, Qt::Key_Escape);
        });
        return m_pWindow->RunModal();
    }

    std::vector<CString> m_log;
    std::unique_ptr<CDialogWindow> m_pWindow;
};

QPushButton* ButtonOf(QWidget& window, const char* text) {
    for (QPushButton* const button : window.findChildren<QPushButton*>()) {
        if (button->text().remove('&') == text) return button;
    }
    ADD_FAILURE() << "no button " << text;
    return nullptr;
}

TEST(QtToolkit, NothingIsCutOffWhateverTheFont) {
    Toolkit();
    const QFont usual = QApplication::font();
    for (const int size : {6, 9, 13, 22}) {
        QFont font = usual;
        font.setPointSize(size);
        QApplication::setFont(font);
        for (const std::uint32_t id :
             {IDD_ABOUT, IDD_MAIN, IDD_PROGRESS, IDD_NEW_SNAPSHOT, IDD_LOAD_SNAPSHOT, IDD_OPTIONS}) {
            CRecorder dialog(id);
            dialog.Run([&](QWidget& window) {
                for (QWidget* const widget : window.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
                    const CString what = widget->metaObject()->className() + CString(" in dialog ") +
                                         std::to_string(id) + " at " + std::to_string(size);
                    EXPECT_TRUE(window.rect().contains(widget->geometry())) << what;
                    const bool hasText = qobject_cast<QLabel*>(widget) || qobject_cast<QAbstractButton*>(widget);
                    if (hasText) {
                        EXPECT_GE(widget->width(), widget->sizeHint().width()) << what;
                    }
                    if (hasText || qobject_cast<QLineEdit*>(widget)) {
                        EXPECT_GE(widget->height(), widget->sizeHint().height()) << what;
                    }
                    if (qobject_cast<QGroupBox*>(widget)) continue;
                    for (QWidget* const other : window.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
                        if (other == widget || qobject_cast<QGroupBox*>(other)) continue;
                        EXPECT_FALSE(widget->geometry().intersects(other->geometry())) << what;
                    }
                }
            });
        }
    }
    QApplication::setFont(usual);
}

TEST(QtToolkit, ClicksAndKeysReachTheDialog) {
    CRecorder name(IDD_NEW_SNAPSHOT);
    EXPECT_EQ(name.Run([&](QWidget& window) {
        QTest::keyClicks(window.findChild<QComboBox*>(), "ab");
        EXPECT_EQ(name.m_pWindow->GetText(IDC_NAME), "ab");
        window.findChild<QCheckBox*>()->click();
        EXPECT_EQ(name.m_pWindow->GetCheck(IDC_COMPARE_AFTER), 1);
        name.m_pWindow->Enable(IDOK, false);
        QTest::keyClick(&window, Qt::Key_Return);
        EXPECT_TRUE(window.isVisible()) << "a disabled default button is not pressed";
        name.m_pWindow->Enable(IDOK, true);
        QTest::keyClick(&window, Qt::Key_Return);
    }),
              IDOK);
    EXPECT_EQ(name.m_log, (std::vector<CString>{"1011/1", "1011/1", "1012/0", "1/0"}));

    CRecorder main(IDD_MAIN);
    EXPECT_EQ(main.Run([&](QWidget& window) {
        main.m_pWindow->SetText(1003, "Gr\u00F6\u00DFe (v2.1)");
        EXPECT_EQ(main.m_pWindow->GetText(1003), "Gr\u00F6\u00DFe (v2.1)");
        EXPECT_TRUE(window.findChild<QLineEdit*>()->isReadOnly());
        QTest::mouseClick(ButtonOf(window, "Create..."), Qt::LeftButton);
        QTest::keyClick(&window, Qt::Key_F1);
        main.m_pWindow->EnableMenuEntry(IDC_COMPARE, false);
        QMenu* const file = window.findChild<QMenuBar*>()->actions().front()->menu();
        emit file->aboutToShow();
        EXPECT_FALSE(file->actions().at(6)->isEnabled());
        file->actions().at(8)->trigger();
        window.findChild<QLineEdit*>()->setFocus();
        QTest::keyClick(window.findChild<QLineEdit*>(), Qt::Key_Return);
    }),
              IDOK);
    EXPECT_EQ(main.m_log, (std::vector<CString>{"1004/0", "57670/0", "menu 0", "57665/0", "1/0"}));
    EXPECT_EQ(CRecorder(IDD_LOAD_SNAPSHOT).Run([](QWidget&) {}), IDCANCEL) << "Esc";
}

TEST(QtToolkit, ListsAndThreeStateBoxes) {
    CRecorder options(IDD_OPTIONS);
    CDialogWindow& window = *options.m_pWindow;
    window.AddItem(IDC_DRIVES, "C:", 3, true);
    window.AddItem(IDC_DRIVES, "D:", 5, false);
    options.m_log.clear();
    options.Run([&](QWidget& widget) {
        auto* const list = widget.findChild<QListWidget*>();
        EXPECT_FALSE(list->item(0)->icon().isNull());
        EXPECT_TRUE(window.IsItemSelected(IDC_DRIVES, 0));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                          list->visualItemRect(list->item(1)).center());
        EXPECT_TRUE(window.IsItemSelected(IDC_DRIVES, 0) && window.IsItemSelected(IDC_DRIVES, 1));
        window.SelectItem(IDC_DRIVES, 0, false);
        EXPECT_FALSE(window.IsItemSelected(IDC_DRIVES, 0));
        for (const int state : {1, 2, 0, 1}) {
            for (QCheckBox* const box : widget.findChildren<QCheckBox*>()) {
                if (box->text() == "&Hard Drives") box->click();
            }
            EXPECT_EQ(window.GetCheck(IDC_HARD_DRIVES), state);
        }
    });
    EXPECT_EQ(std::count(options.m_log.begin(), options.m_log.end(), "1025/2"), 2);
    EXPECT_EQ(std::count(options.m_log.begin(), options.m_log.end(), "1021/0"), 4);

    CRecorder load(IDD_LOAD_SNAPSHOT);
    load.m_pWindow->AddEntry(IDC_SNAPSHOTS, "B");
    load.m_pWindow->AddEntry(IDC_SNAPSHOTS, "a");
    load.Run([&](QWidget& widget) {
        EXPECT_EQ(load.m_pWindow->GetText(IDC_SNAPSHOTS), "") << "nothing is selected at the start";
        auto* const list = widget.findChild<QListWidget*>();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        EXPECT_EQ(load.m_pWindow->GetText(IDC_SNAPSHOTS), "a") << "sorted";
    });
}

TEST(QtToolkit, MessagesOfAnotherThreadComeInOrder) {
    CRecorder progress(IDD_PROGRESS);
    std::thread worker([&] {
        for (std::uint32_t i = 0; i < 1000; ++i)
            progress.m_pWindow->PostMessage(WM_USER + 1, i, 0);
        progress.m_pWindow->PostMessage(WM_USER, 0, 0);
    });
    EXPECT_EQ(progress.m_pWindow->RunModal(), IDOK);
    worker.join();
    ASSERT_EQ(progress.m_log.size(), 1001U);
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(progress.m_log[i], "message 1025 " + std::to_string(i));
}

TEST(QtToolkit, QuestionsGiveTheirAnswers) {
    const auto answer = [](EMessageButtons buttons, const char* text) {
        QTimer::singleShot(0, [text] {
            QWidget* const box = QApplication::activeModalWidget();
            ASSERT_NE(box, nullptr);
            QTest::mouseClick(ButtonOf(*box, text), Qt::LeftButton);
        });
        return Toolkit().ShowMessage("Line\n<b>two</b>", "Title", buttons, EMessageIcon::kQuestion);
    };
    Toolkit().BeginWaitCursor();
    EXPECT_EQ(answer(EMessageButtons::kYesNoCancel, "Yes"), IDYES);
    EXPECT_EQ(answer(EMessageButtons::kYesNoCancel, "No"), IDNO);
    EXPECT_EQ(answer(EMessageButtons::kYesNoCancel, "Cancel"), IDCANCEL);
    EXPECT_EQ(answer(EMessageButtons::kYesNo, "No"), IDNO);
    EXPECT_EQ(answer(EMessageButtons::kOk, "OK"), IDOK);
    EXPECT_NE(QApplication::overrideCursor(), nullptr) << "the wait goes on";
    Toolkit().EndWaitCursor();
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_TRUE(Toolkit().ShowSplash());
    EXPECT_EQ(QApplication::topLevelWidgets().front()->size(), QSize(591, 368));
    Toolkit().HideSplash();
}

}  // namespace
}  // namespace delvane

// What fontconfig keeps to the end of the process is none of ours.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }

int main(int argumentCount, char** arguments) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    testing::InitGoogleTest(&argumentCount, arguments);
    const int code = RUN_ALL_TESTS();
    delvane::g_toolkit.reset();
    return code;
}
