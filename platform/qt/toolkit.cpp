// The window system on Qt 6: a module of its own, which the program loads for a visible run.
#include <QtGui/QCloseEvent>
#include <QtGui/QIcon>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>
#include <QtGui/QScreen>
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
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "platform/qt/module.h"

namespace delvane {
namespace {

QString ToQt(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// Goes from off to on, and from there to the third state if it has one; Qt's own goes to the third state first.
class CCheckBox : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    void nextCheckState() override {
        setCheckState(checkState() == Qt::Unchecked                 ? Qt::Checked
                      : checkState() == Qt::Checked && isTristate() ? Qt::PartiallyChecked
                                                                    : Qt::Unchecked);
    }
};

// Sorted without regard to case, as a list box of Windows has it.
class CSortedItem : public QListWidgetItem {
public:
    using QListWidgetItem::QListWidgetItem;
    bool operator<(const QListWidgetItem& other) const override {
        return QString::compare(text(), other.text(), Qt::CaseInsensitive) < 0;
    }
};

// The open dialogs, the innermost last. It is the parent of the next, whichever window has the focus at that moment:
// between two dialogs none of ours may have it, and a dialog without a parent is none whose end gives the focus back.
using COpenDialogs = std::vector<QWidget*>;

class CQtWindow : public QDialog, public CDialogWindow {
public:
    CQtWindow(COpenDialogs& open, const CDialogTemplate& dialog, CDialogEvents& events, const QPixmap& drives)
        : QDialog(open.empty() ? nullptr : open.back()), CDialogWindow(dialog, events), m_open(open), m_drives(drives) {
        setWindowTitle(ToQt(dialog.m_title));
        setWindowModality(Qt::ApplicationModal);
        setWindowFlag(Qt::WindowContextHelpButtonHint, false);
        for (const CControlTemplate& control : dialog.m_controls)
            AddControl(control);
        AddMenu();
        Place();
    }

    void PostMessage(std::uint32_t message, std::uint32_t wParam) override {
        QMetaObject::invokeMethod(
            this, [this, message, wParam] { Tell(&CDialogEvents::OnMessage, message, wParam); }, Qt::QueuedConnection);
    }

    void SetText(std::uint32_t id, std::string_view text) override {
        QWidget* const widget = &Get<QWidget>(id);
        if (auto* const edit = dynamic_cast<QLineEdit*>(widget)) {
            edit->setText(ToQt(text));
            edit->setCursorPosition(0);
        } else if (auto* const combo = dynamic_cast<QComboBox*>(widget)) {
            combo->setEditText(ToQt(text));
        }
    }
    CString GetText(std::uint32_t id) const override {
        QWidget* const widget = &Get<QWidget>(id);
        if (const auto* const edit = dynamic_cast<QLineEdit*>(widget)) return edit->text().toStdString();
        if (const auto* const combo = dynamic_cast<QComboBox*>(widget)) return combo->currentText().toStdString();
        const auto* const list = dynamic_cast<QListWidget*>(widget);
        if (list == nullptr || list->selectedItems().isEmpty()) return {};
        return list->selectedItems().front()->text().toStdString();
    }
    void SetCheck(std::uint32_t id, int state) override {
        static constexpr Qt::CheckState kStates[] = {Qt::Unchecked, Qt::Checked, Qt::PartiallyChecked};
        Get<QCheckBox>(id).setCheckState(kStates[state]);
    }
    int GetCheck(std::uint32_t id) const override {
        const Qt::CheckState state = Get<QCheckBox>(id).checkState();
        return state == Qt::Unchecked ? 0 : state == Qt::Checked ? 1 : 2;
    }
    void Enable(std::uint32_t id, bool enabled) override {
        Get<QWidget>(id).setEnabled(enabled);
        if (auto* const entry = findChild<QAction*>(QString::number(id))) entry->setEnabled(enabled);
    }
    void AddEntry(std::uint32_t id, std::string_view text) override {
        Get<QListWidget>(id).addItem(new CSortedItem(ToQt(text)));
    }
    void AddItem(std::uint32_t id, std::string_view text, std::uint32_t image, bool selected) override {
        auto* const item = new QListWidgetItem(GetDriveIcon(image), ToQt(text), &Get<QListWidget>(id));
        item->setSelected(selected);
    }
    void SelectItem(std::uint32_t id, std::size_t index, bool selected) override {
        Get<QListWidget>(id).item(static_cast<int>(index))->setSelected(selected);
    }
    bool IsItemSelected(std::uint32_t id, std::size_t index) const override {
        return Get<QListWidget>(id).item(static_cast<int>(index))->isSelected();
    }

    // Esc and the close box.
    void reject() override { TellClicked(IDCANCEL); }

protected:
    void Run() override {
        m_open.push_back(this);
        Tell(&CDialogEvents::OnInitDialog);
        if (!HasEnded()) exec();
        m_open.pop_back();
        // A window manager that has just begun to show a dialog of a moment gives the focus to nobody.
        if (parentWidget() != nullptr) parentWidget()->activateWindow();
    }
    void Close() override { QDialog::done(0); }

    void changeEvent(QEvent* change) override {
        QDialog::changeEvent(change);
        if (change->type() == QEvent::FontChange) Place();
    }

    // Enter presses the button that has the focus, else the default button; without one it is OK.
    void keyPressEvent(QKeyEvent* key) override {
        if (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter) return QDialog::keyPressEvent(key);
        auto* button = dynamic_cast<QPushButton*>(focusWidget());
        if (button == nullptr) button = m_pDefault;
        if (button != nullptr) {
            button->click();
        } else {
            TellClicked(IDOK);
        }
    }

private:
    template <class Widget>
    Widget& Get(std::uint32_t id) const {
        return *findChild<Widget*>(QString::number(id));
    }
    void TellClicked(std::uint32_t id) { Tell(&CDialogEvents::OnControl, id, EControlEvent::kClicked); }

    // Of the strip; empty for a number that has none.
    QIcon GetDriveIcon(std::uint32_t kind) const {
        constexpr int kWidth = 16;
        if (kind >= static_cast<std::uint32_t>(m_drives.width() / kWidth)) return {};
        return m_drives.copy(static_cast<int>(kind) * kWidth, 0, kWidth, m_drives.height());
    }

    void AddControl(const CControlTemplate& control) {
        const auto tell = [this, id = control.m_id](EControlEvent event) {
            return [this, id, event] { Tell(&CDialogEvents::OnControl, id, event); };
        };
        QWidget* widget = nullptr;
        switch (control.m_kind) {
            case EControlKind::kLabel:
                widget = m_pLabel = new QLabel(ToQt(control.m_text), this);
                m_widgets.push_back(widget);
                return;
            case EControlKind::kGroup:
                widget = new QGroupBox(ToQt(control.m_text), this);
                break;
            case EControlKind::kIcon: {
                auto* const label = new QLabel(this);
                label->setPixmap(windowIcon().pixmap(32, 32));
                widget = label;
                break;
            }
            case EControlKind::kText: {
                auto* const edit = new QLineEdit(this);
                edit->setReadOnly(true);
                widget = edit;
                break;
            }
            case EControlKind::kButton:
            case EControlKind::kDefaultButton: {
                auto* const button = new QPushButton(ToQt(control.m_text), this);
                button->setAutoDefault(false);
                if (control.m_kind == EControlKind::kDefaultButton) {
                    button->setDefault(true);
                    m_pDefault = button;
                }
                connect(button, &QPushButton::clicked, tell(EControlEvent::kClicked));
                widget = button;
                break;
            }
            case EControlKind::kCheck:
            case EControlKind::kThreeState: {
                auto* const box = new CCheckBox(ToQt(control.m_text), this);
                box->setTristate(control.m_kind == EControlKind::kThreeState);
                connect(box, &QCheckBox::clicked, tell(EControlEvent::kClicked));
                widget = box;
                break;
            }
            case EControlKind::kCombo: {
                auto* const combo = new QComboBox(this);
                combo->setEditable(true);
                combo->setInsertPolicy(QComboBox::NoInsert);
                combo->setCompleter(nullptr);
                for (const std::string_view entry : control.m_entries)
                    combo->addItem(ToQt(entry));
                combo->setCurrentIndex(-1);  // no suggestion is chosen
                connect(combo, &QComboBox::editTextChanged, tell(EControlEvent::kEdited));
                connect(combo, &QComboBox::activated, tell(EControlEvent::kSelected));
                widget = combo;
                break;
            }
            case EControlKind::kSortedList:
            case EControlKind::kItemList: {
                auto* const list = new QListWidget(this);
                list->setUniformItemSizes(true);
                if (control.m_kind == EControlKind::kSortedList) {
                    list->setSortingEnabled(true);
                } else {
                    list->setSelectionMode(QListWidget::ExtendedSelection);
                    list->setIconSize({16, 13});
                }
                connect(list, &QListWidget::itemSelectionChanged, tell(EControlEvent::kSelected));
                widget = list;
                break;
            }
        }
        if (m_pLabel != nullptr) m_pLabel->setBuddy(widget);
        m_pLabel = nullptr;
        widget->setObjectName(QString::number(control.m_id));
        m_widgets.push_back(widget);
    }

    void AddMenu() {
        if (m_template.m_menu.empty()) return;
        m_pMenu = new QMenuBar(this);
        m_pMenu->setNativeMenuBar(false);
        for (const CMenuPopup& popup : m_template.m_menu) {
            QMenu* const menu = m_pMenu->addMenu(ToQt(popup.m_text));
            for (const CMenuEntry& entry : popup.m_entries) {
                if (entry.m_id == 0) {
                    menu->addSeparator();
                    continue;
                }
                const std::size_t tab = entry.m_text.find('\t');
                QAction* const action = menu->addAction(ToQt(entry.m_text.substr(0, tab)));
                if (tab != std::string_view::npos)
                    action->setShortcut(QKeySequence(ToQt(entry.m_text.substr(tab + 1))));
                const std::uint32_t id = entry.m_id;
                connect(action, &QAction::triggered, [this, id] { TellClicked(id); });
                action->setObjectName(QString::number(id));
            }
        }
    }

    // Units as the font gives them, larger where a text would be cut off.
    void Place() {
        if (m_widgets.empty()) return;
        const QFontMetrics metrics(font());
        const QString letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
        double unitX = metrics.horizontalAdvance(letters) / 52.0 / 4;
        double unitY = metrics.height() / 8.0;
        for (std::size_t i = 0; i < m_widgets.size(); ++i) {
            const CControlTemplate& control = m_template.m_controls[i];
            const QSize wanted = m_widgets[i]->sizeHint();
            const bool hasOwnText = !control.m_text.empty() && control.m_kind != EControlKind::kGroup;
            const bool isLine = control.m_kind != EControlKind::kGroup && control.m_kind != EControlKind::kSortedList &&
                                control.m_kind != EControlKind::kItemList;
            if (hasOwnText) unitX = std::max(unitX, wanted.width() / static_cast<double>(control.m_place.m_nWidth));
            if (isLine) unitY = std::max(unitY, wanted.height() / static_cast<double>(control.m_place.m_nHeight));
        }
        const auto x = [unitX](int units) { return static_cast<int>(units * unitX + 0.5); };
        const auto y = [unitY](int units) { return static_cast<int>(units * unitY + 0.5); };
        const int top = m_pMenu != nullptr ? m_pMenu->sizeHint().height() : 0;
        for (std::size_t i = 0; i < m_widgets.size(); ++i) {
            const CPlace& place = m_template.m_controls[i].m_place;
            m_widgets[i]->setGeometry(x(place.m_nLeft), top + y(place.m_nTop), x(place.m_nWidth), y(place.m_nHeight));
            // A group lies behind what stands in it.
            if (m_template.m_controls[i].m_kind == EControlKind::kGroup) m_widgets[i]->lower();
        }
        setFixedSize(x(m_template.m_nWidth), top + y(m_template.m_nHeight));
        if (m_pMenu != nullptr) m_pMenu->setGeometry(0, 0, width(), top);
    }

    COpenDialogs& m_open;
    const QPixmap& m_drives;          // the strip
    std::vector<QWidget*> m_widgets;  // in the order of the template; Qt owns them
    QLabel* m_pLabel = nullptr;       // the one that waits for its control
    QPushButton* m_pDefault = nullptr;
    QMenuBar* m_pMenu = nullptr;
};

class CSplash : public QWidget {
public:
    CSplash()
        : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint),
          m_picture(devicePixelRatioF() > 1 ? ":/splash@2x.png" : ":/splash.png") {
        setFixedSize(m_picture.deviceIndependentSize().toSize());
        setAttribute(Qt::WA_OpaquePaintEvent);
        move(screen()->availableGeometry().center() - rect().center());
    }
    bool m_bPainted = false;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);  // for a scaling between the two
        painter.drawPixmap(0, 0, m_picture);
        m_bPainted = true;
    }

private:
    QPixmap m_picture;
};

bool g_isUp = false;  // there is a toolkit, and a window may be open

class CQtToolkit : public CToolkit {
public:
    CQtToolkit() : m_application(m_nArguments, m_arguments) {
        QApplication::setApplicationName("delvane");
        QApplication::setApplicationDisplayName({});
        QIcon icon;
        for (const char* const size : {"32", "48", "64", "128"})
            icon.addFile(QString(":/icon-%1.png").arg(size));
        QApplication::setWindowIcon(icon);
        QApplication::setQuitOnLastWindowClosed(false);
        g_isUp = true;
    }
    ~CQtToolkit() override { g_isUp = false; }

    std::unique_ptr<CDialogWindow> CreateDialog(const CDialogTemplate& dialog, CDialogEvents& events) override {
        return std::make_unique<CQtWindow>(m_open, dialog, events, m_drives);
    }

    void ShowSplash() override {
        m_pSplash = std::make_unique<CSplash>();
        m_pSplash->show();
        // The window system takes its time until it lets a window paint.
        for (int i = 0; i < 50 && !m_pSplash->m_bPainted; ++i) {
            QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
    void HideSplash() override { m_pSplash.reset(); }

protected:
    std::uint32_t ShowBox(std::string_view text, std::string_view title, EMessageKind kind) override {
        QMessageBox box(m_open.empty() ? nullptr : m_open.back());
        box.setWindowTitle(ToQt(title));
        box.setTextFormat(Qt::PlainText);
        box.setText(ToQt(text));
        box.setIcon(kind == EMessageKind::kError     ? QMessageBox::Critical
                    : kind == EMessageKind::kWarning ? QMessageBox::Warning
                                                     : QMessageBox::Question);
        box.setStandardButtons(kind == EMessageKind::kYesNo ? QMessageBox::Yes | QMessageBox::No
                               : kind == EMessageKind::kYesNoCancel
                                   ? QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel
                                   : QMessageBox::StandardButtons(QMessageBox::Ok));
        const int answer = box.exec();
        if (!m_open.empty()) m_open.back()->activateWindow();
        return answer == QMessageBox::Yes      ? IDYES
               : answer == QMessageBox::No     ? IDNO
               : answer == QMessageBox::Cancel ? IDCANCEL
                                               : IDOK;
    }
    void ShowWaitCursor(bool shown) override {
        shown ? QApplication::setOverrideCursor(Qt::WaitCursor) : QApplication::restoreOverrideCursor();
    }

private:
    int m_nArguments = 1;
    char m_name[8] = "delvane";
    char* m_arguments[2] = {m_name, nullptr};
    QApplication m_application;
    QPixmap m_drives{":/drives.png"};
    COpenDialogs m_open;
    std::unique_ptr<CSplash> m_pSplash;
};

// Qt gives up where it cannot reach the display, and calls exit from within its loop where the display goes away: one
// sentence instead of its own, and an end that a script can tell from a crash. Nothing may be destroyed on that way,
// since the window that is open stands on the stack.
[[noreturn]] void EndWith(const char* sentence, int code) {
    std::fputs(sentence, stderr);
    std::_Exit(code);
}

void OnExit() {
    constexpr int kExitNotStarted = 64;  // or could not go on
    if (g_isUp)
        EndWith("delvane: the display has gone away, and the windows with it; what was saved stays\n", kExitNotStarted);
}

void OnQtMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (g_isUp && (type == QtFatalMsg || text.contains(QLatin1String("connection broke")))) OnExit();
    constexpr int kExitNoWindow = 32;
    if (type == QtFatalMsg) {
        EndWith(
            "delvane: no window can be shown: the display does not answer, or Qt cannot use it; add /s for an "
            "unattended run (--help lists the switches)\n",
            kExitNoWindow);
    }
}

}  // namespace

}  // namespace delvane

extern "C" __attribute__((visibility("default"))) delvane::CToolkit* DelvaneMakeToolkit() {
    qInstallMessageHandler(delvane::OnQtMessage);
    std::atexit(delvane::OnExit);
    return new delvane::CQtToolkit;
}
