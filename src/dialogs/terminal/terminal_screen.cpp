#include "dialogs/terminal/terminal_screen.h"

#include <QApplication>
#include <QMenu>
#include <QPaintEvent>
#include <QPainter>
#include <QShowEvent>
#include <utility>

#include "dialogs/terminal/terminal_font.h"
#include "terminal/screen_layout.h"
#include "ui/controls.h"
#include "ui/placement.h"
#include "ui/static_text.h"
#include "ui/tool_tip.h"

namespace quarn {
namespace {

constexpr QRgb kNavy = qRgb(1, 36, 86);
constexpr QRgb kBlack = qRgb(0, 0, 0);
constexpr QRgb kWhite = qRgb(255, 255, 255);

QColor BackgroundOf(ColourScheme scheme) {
  switch (scheme) {
    case ColourScheme::Navy:
      return kNavy;
    case ColourScheme::Black:
      return kBlack;
    case ColourScheme::System:
      break;
  }
  return QApplication::palette().color(QPalette::Button);
}

/// A size at which the button's caption fits, at most the dialog's own: the buttons' rectangles are fixed.
QFont FontThatFits(const QPushButton& button, QSize size) {
  constexpr int kSidePadding = 8;
  constexpr int kVerticalPadding = 4;
  QFont font = button.font();
  for (int pixels = QFontInfo(font).pixelSize(); pixels > 1; --pixels) {
    const QFontMetrics metrics(font);
    if (metrics.height() <= size.height() - kVerticalPadding &&
        metrics.horizontalAdvance(button.text()) <= size.width() - kSidePadding) {
      break;
    }
    font.setPixelSize(pixels - 1);
  }
  return font;
}

}  // namespace

CTerminalScreen::CTerminalScreen(QWidget* owner, const TerminalScreenContext& context)
    : ModelessWindow(owner, context.state, Window::TerminalScreen, QStringLiteral("CTerminalScreen")),
      m_context(context) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  // Dead keys and input methods come as committed text.
  setAttribute(Qt::WA_InputMethodEnabled);
  CreateControls();
  CreateMenu();
  ApplyToolTips();
  RefreshTitle();
  ApplyLayout();
  ApplyColours();
  RedrawLogRows();
  ShowCommandLine();
  Put([this, saved = m_context.savedWindowRect] {
    ApplyWindowSize();
    if (saved.isNull()) {
      CenterOnScreen(*this);
    } else {
      move(saved.topLeft());
    }
  });
  StartTicks();
}

const QString& CTerminalScreen::RowText(int row) const {
  return m_rows[static_cast<std::size_t>(row)]->Text();
}

void CTerminalScreen::CreateControls() {
  const QFont font = TerminalFont();
  const auto create = [&](const char* name, int controlId) {
    auto* text = WithControlId(new StaticText(this), controlId);
    text->setObjectName(QLatin1String(name));
    text->setFont(font);
    return text;
  };
  m_prompt = create("prompt", kPromptId);
  m_commandDisplay = create("commandLine", kCommandDisplayId);
  m_commandDisplay->BecomeField(QStringLiteral("Command line"));
  for (int row = 0; row < ScreenRowCount; ++row) {
    auto* text = create("row", kFirstRowId + row);
    text->setGeometry(RowRect(row));
    m_rows[static_cast<std::size_t>(row)] = text;
  }
  for (std::size_t i = 0; i < m_buttons.size(); ++i) {
    const TerminalButton& description = kTerminalButtons[i];
    auto* button =
        WithControlId(new QPushButton(QString::fromUtf16(description.caption), this), description.controlId);
    button->setObjectName(button->text());
    button->setAutoDefault(false);
    button->setAttribute(Qt::WA_InputMethodEnabled);
    button->installEventFilter(this);
    connect(button, &QPushButton::clicked, this, [this, &description] { PressButton(description); });
    m_buttons[i] = button;
    if (description.controlId == kSendButtonId) m_sendButton = button;
  }
  // Its caret blinks. On top of the other controls, it is painted without painting them.
  m_commandDisplay->raise();
}

void CTerminalScreen::CreateMenu() {
  m_menu = new QMenu(QStringLiteral("Menu "), this);
  m_menu->setAccessibleName(QStringLiteral("Terminal Screen"));
  const auto copy = [this](QString (OperationLog::*text)(const QString&) const) {
    CopyToClipboard((m_context.log.*text)(m_context.settings.lineNum));
  };
  m_menu->addAction(QStringLiteral("Copy Log - Page"), this, [copy] { copy(&OperationLog::CopyLogPage); });
  m_menu->addAction(QStringLiteral("Copy Log - All "), this, [copy] { copy(&OperationLog::CopyLogAll); });
  m_menu->addAction(QStringLiteral("Clear All Log Entries "), this, [this] {
    // Its question would get no key while a transaction waits, and the answer comes into the log then.
    if (!InputHold::IsAnyHolding()) ClearAllLogEntries();
  });
  m_menu->addSeparator();
  const auto open = [this](const QString& text, const std::function<void()>& dialog) {
    m_menu->addAction(text, this, [&dialog] { dialog(); })->setEnabled(dialog != nullptr);
  };
  open(QStringLiteral("Function Key Table"), m_context.openFunctionKeyTable);
  m_menu->addSeparator();
  open(QStringLiteral("Option"), m_context.openScreenOption);
}

void CTerminalScreen::ApplyLayout() {
  const SettingsRecord& settings = m_context.settings;
  m_prompt->setGeometry(PromptRect());
  m_prompt->SetText(PromptText(settings));
  m_commandDisplay->setGeometry(CommandDisplayRect(settings));
  const bool shown = ButtonsShown(settings);
  for (std::size_t i = 0; i < m_buttons.size(); ++i) {
    QPushButton& button = *m_buttons[i];
    const QRect place = ButtonRect(static_cast<int>(i), settings);
    button.setFont(QFont());
    button.setFont(FontThatFits(button, place.size()));
    button.setGeometry(place);
    button.setVisible(shown);
  }
  ApplyWindowSize();
}

void CTerminalScreen::ApplyWindowSize() {
  m_frame = FrameOf(*this);
  setFixedSize(TerminalWindowSize(m_context.settings, m_context.state.displayScalePercent).shrunkBy(m_frame));
}

void CTerminalScreen::ApplyColours() {
  m_scheme = ColourSchemeOf(m_context.settings);
  QPalette colours = QApplication::palette();
  if (IsDark(m_scheme)) colours.setColor(QPalette::WindowText, kWhite);
  m_prompt->setPalette(colours);
  m_commandDisplay->setPalette(colours);
  // The text changes with each blink of the caret.
  m_commandDisplay->SetBackground(BackgroundOf(m_scheme));
  for (StaticText* row : m_rows) row->setPalette(colours);
  update();
}

void CTerminalScreen::ApplyToolTips() {
  for (std::size_t i = 0; i < m_buttons.size(); ++i) {
    const int index = kTerminalButtons[i].storedCommand;
    if (index < 0) continue;
    SetPlainToolTip(*m_buttons[i], m_context.settings.mem[static_cast<std::size_t>(index)]);
  }
}

void CTerminalScreen::RefreshAll() {
  ApplyToolTips();
  ApplyColours();
  ApplyLayout();
  RefreshTitle();
  RedrawLogRows();
}

void CTerminalScreen::RefreshTitle() {
  setWindowTitle(TerminalTitle(m_context.state.currentPortName, IsPortOpen(), m_context.settings.inputMax,
                               m_context.commandLine.IsOverwrite(), m_context.log));
}

void CTerminalScreen::RedrawLogRows() {
  for (int row = 0; row < ScreenRowCount; ++row) {
    m_rows[static_cast<std::size_t>(row)]->SetText(m_context.log.RowText(row, m_context.settings.lineNum));
  }
  RefreshTitle();
}

void CTerminalScreen::ShowCommandLine() {
  const CommandLine& line = m_context.commandLine;
  m_commandDisplay->SetText(line.DisplayText());
  m_commandDisplay->SetFieldText(line.Text(), line.CursorPos());
}

void CTerminalScreen::ShowWaitingText(const QString& text) { m_commandDisplay->SetText(text); }

void CTerminalScreen::changeEvent(QEvent* event) {
  ModelessWindow::changeEvent(event);
  // The desktop's colours have changed, and the palettes of the lines contain some of them.
  if (event->type() == QEvent::PaletteChange) ApplyColours();
}

void CTerminalScreen::paintEvent(QPaintEvent* event) {
  QPainter(this).fillRect(event->rect(), BackgroundOf(m_scheme));
}

void CTerminalScreen::showEvent(QShowEvent* event) {
  ModelessWindow::showEvent(event);
  if (!event->spontaneous()) TakeFocus();
}

void CTerminalScreen::closeEvent(QCloseEvent* event) {
  m_context.savedWindowRect = frameGeometry();
  MarkClosed();
  Requests().refresh.Add({Window::TerminalScreen, Window::MainDialog});
  ModelessWindow::closeEvent(event);
}

}  // namespace quarn
