// The user of the Qt module, on Qt's offscreen platform.
#include <QtCore/QTimer>
#include <QtTest/QTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <gtest/gtest.h>

#include "platform/qt/module.h"
#include "tests/toolkit/user.h"

extern "C" delvane::CToolkit* DelvaneMakeToolkit();

namespace delvane::user {
namespace {

// One for all tests: there is one application in a process. It ends before the process does.
std::unique_ptr<CToolkit> g_toolkit;

QWidget& Window() { return *QApplication::activeModalWidget(); }

template <class Kind = QWidget>
Kind& Control(std::uint32_t id) {
    return *Window().findChild<Kind*>(QString::number(id));
}

QMenu& Menu(std::size_t popup) {
    return *Window().findChild<QMenuBar*>()->actions().at(static_cast<qsizetype>(popup))->menu();
}

QWidget& FocusOf(QWidget& window) { return window.focusWidget() != nullptr ? *window.focusWidget() : window; }

CArea AreaOf(const QRect& rect) { return {rect.x(), rect.y(), rect.x() + rect.width(), rect.y() + rect.height()}; }

}  // namespace

CToolkit& GetToolkit() {
    if (g_toolkit == nullptr) g_toolkit.reset(DelvaneMakeToolkit());
    return *g_toolkit;
}

void WaitForWindow() { EXPECT_TRUE(QTest::qWaitForWindowActive(&Window())); }

void Press(EKey key) {
    static constexpr Qt::Key kKeys[] = {Qt::Key_Return, Qt::Key_Escape, Qt::Key_F1};
    QTest::keyClick(&FocusOf(Window()), kKeys[static_cast<int>(key)]);
}

void Type(std::string_view text) {
    for (const QChar letter : QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())))
        QTest::sendKeyEvent(QTest::Click, &FocusOf(Window()), Qt::Key_unknown, QString(letter), Qt::NoModifier);
}

void Focus(std::uint32_t id) { Control(id).setFocus(); }

bool HasFocus(std::uint32_t id) { return Control(id).hasFocus(); }

void Click(std::uint32_t id) {
    // A box is as wide as its place, and its text may be less.
    const QRect rect = Control(id).rect();
    QTest::mouseClick(&Control(id), Qt::LeftButton, {}, QPoint(10, rect.center().y()));
}

void ClickItem(std::uint32_t id, int index, bool withControl) {
    auto& list = Control<QListWidget>(id);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, withControl ? Qt::ControlModifier : Qt::NoModifier,
                      list.visualItemRect(list.item(index)).center());
}

void CloseBox() { Window().close(); }

void Choose(std::uint32_t menuEntry) { Control<QAction>(menuEntry).trigger(); }

std::size_t CountEntries(std::size_t popup) { return static_cast<std::size_t>(Menu(popup).actions().size()); }

bool IsMenuEntryEnabled(std::uint32_t menuEntry) { return Control<QAction>(menuEntry).isEnabled(); }

void PickSuggestion(std::uint32_t combo, int index) {
    auto& box = Control<QComboBox>(combo);
    box.showPopup();
    box.view()->setCurrentIndex(box.model()->index(index, 0));
    QTest::keyClick(box.view(), Qt::Key_Return);
}

int CountSuggestions(std::uint32_t combo) { return Control<QComboBox>(combo).count(); }

bool HasPictures(std::uint32_t list) { return !Control<QListWidget>(list).item(0)->icon().isNull(); }

std::vector<CPlaced> GetPlaces(CArea& window) {
    window = AreaOf(Window().rect());
    std::vector<CPlaced> places;
    for (QWidget* const widget : Window().findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (qobject_cast<QMenuBar*>(widget) != nullptr) continue;
        const bool hasText = qobject_cast<QLabel*>(widget) || qobject_cast<QAbstractButton*>(widget);
        const bool isLine = hasText || qobject_cast<QLineEdit*>(widget);
        const bool fits = (!hasText || widget->width() >= widget->sizeHint().width()) &&
                          (!isLine || widget->height() >= widget->sizeHint().height());
        places.push_back({widget->metaObject()->className(), AreaOf(widget->geometry()),
                          qobject_cast<QGroupBox*>(widget) != nullptr, fits});
    }
    return places;
}

std::vector<int> GetScales() { return {6, 9, 13, 22}; }

void SetScale(int scale) {
    GetToolkit();
    if (QApplication::activeModalWidget() != nullptr) return;
    QFont font = QApplication::font();
    font.setPointSize(scale);
    QApplication::setFont(font);
}

void AnswerBox(std::uint32_t button) {
    QTimer::singleShot(0, [button] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        QTest::mouseClick(box->button(button == IDYES  ? QMessageBox::Yes
                                      : button == IDNO ? QMessageBox::No
                                      : button == IDOK ? QMessageBox::Ok
                                                       : QMessageBox::Cancel),
                          Qt::LeftButton);
    });
}

bool HasWaitCursor() { return QApplication::overrideCursor() != nullptr; }

CArea GetSplash() {
    for (const QWidget* const widget : QApplication::topLevelWidgets()) {
        if (widget->windowType() == Qt::SplashScreen) return AreaOf(widget->geometry());
    }
    return {};
}

}  // namespace delvane::user

// What fontconfig keeps to the end of the process is none of ours.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }

int main(int argumentCount, char** arguments) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    testing::InitGoogleTest(&argumentCount, arguments);
    const int code = RUN_ALL_TESTS();
    delvane::user::g_toolkit.reset();
    return code;
}
