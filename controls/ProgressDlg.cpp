// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/ProgressDlg.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr int panelWidth = 440;  // pixels, for the text on one line
constexpr int margin = 24;
constexpr int spacing = 16;

/** What the dialog stands over: the sheet that is open, or else the main window, shown or not. Null without either. */
QWidget* windowBelow() {
    if (QWidget* sheet = QApplication::activeModalWidget()) {
        return sheet;
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto isMain = [](const QWidget* window) {
        return qobject_cast<const QMainWindow*>(window) != nullptr;
    };
    const auto found = std::find_if(windows.begin(), windows.end(), isMain);
    return found != windows.end() ? *found : nullptr;
}

}  // namespace

class ProgressDlg::Panel : public QDialog {
  public:
    explicit Panel(QWidget* parent);

    void display(const ProgressDlg& what);

    /** Escape and the close button end here. */
    void reject() override;

  protected:
    /** A dialog that would not close would keep the program from quitting. */
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QLabel* const m_Text;
    QProgressBar* const m_Bar;
    bool m_IsCancelAllowed = true;
};

ProgressDlg::Panel::Panel(QWidget* parent) : QDialog(parent), m_Text(new QLabel), m_Bar(new QProgressBar) {
    m_Text->setTextFormat(Qt::PlainText);
    m_Text->setWordWrap(true);
    m_Bar->setTextVisible(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    layout->addWidget(m_Text);
    layout->addWidget(m_Bar);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    m_Text->setFixedWidth(panelWidth - 2 * margin);
    // What is modal to the whole program would block its item in the tray too, where that is a window.
    setWindowModality(parent != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
    qApp->installEventFilter(this);
}

void ProgressDlg::Panel::display(const ProgressDlg& what) {
    setWindowTitle(what.m_Title);
    m_Text->setText(what.m_Text);
    m_Bar->setRange(0, what.m_IsIndeterminate ? 0 : 100);
    m_Bar->setAccessibleName(what.m_Title);
    m_IsCancelAllowed = what.m_IsCancelAllowed;
    if (!isVisible()) {  // a flag's change would hide it
        setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
        setWindowFlag(Qt::WindowCloseButtonHint, m_IsCancelAllowed);
    }
}

void ProgressDlg::Panel::reject() {
    if (m_IsCancelAllowed) {
        QDialog::reject();
    }
}

bool ProgressDlg::Panel::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::Quit) {
        accept();
    }
    return QDialog::eventFilter(watched, event);
}

ProgressDlg* ProgressDlg::sharedProgressDlg() {
    static ProgressDlg shared;
    return &shared;
}

ProgressDlg::~ProgressDlg() = default;

void ProgressDlg::setTitle(const QString& title) {
    m_Title = title;
    update();
}

void ProgressDlg::setText(const QString& text) {
    m_Text = text;
    update();
}

void ProgressDlg::setCancelAllowed(bool isAllowed) {
    m_IsCancelAllowed = isAllowed;
    update();
}

void ProgressDlg::setIndeterminate(bool isIndeterminate) {
    m_IsIndeterminate = isIndeterminate;
    update();
}

void ProgressDlg::update() {
    if (m_Panel != nullptr) {
        m_Panel->display(*this);
    }
}

void ProgressDlg::runModal() {
    if (isRunning()) {
        return;
    }
    const QPointer<Panel> panel = new Panel(windowBelow());
    m_Panel = panel;
    update();
    panel->exec();
    delete panel;  // null when the window below took it along
}

/** One that has ended may still be there: its end may be behind us in the same round of events. */
bool ProgressDlg::isRunning() const {
    return m_Panel != nullptr && m_Panel->isVisible();
}

void ProgressDlg::end() {
    if (isRunning()) {
        m_Panel->accept();
    }
}
