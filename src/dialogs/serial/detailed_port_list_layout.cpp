// The layout of the rows of the Detailed COM Port List, and its height.

#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>

#include "dialogs/serial/detailed_port_list_dialog.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kRowPitch = 16;    // dialog units from row to row
constexpr int kRadioWidth = 40;  // room for the longest port name
constexpr int kDescriptionWidth = 280;

// Heights of the whole window, its frame included, in pixels.
constexpr int kBelowRows = 53;  // under the row that would come next; the buttons stand in its place
constexpr int kEmptyHeight = 90;

QRect AvailableOf(const QWidget& window) {
  const QScreen* screen = window.screen();
  return screen != nullptr ? screen->availableGeometry() : QRect(0, 0, 640, 480);
}

}  // namespace

int CPortDetails::ClientHeight(int rowsTop) const {
  const DialogGrid measure(*this);
  const int margin = measure.Height(DialogGrid::kMargin);
  const int frame = m_frame.top() + m_frame.bottom();
  if (m_shown.isEmpty()) return std::max(kEmptyHeight - frame, m_status->geometry().bottom() + 1 + margin);
  const int rows = static_cast<int>(m_shown.size());
  const int nextRowBottom = rowsTop + (rows + 1) * measure.Height(kRowPitch);
  const int wanted = nextRowBottom + std::max(kBelowRows - frame, measure.Height(DialogGrid::kGap));
  return std::min(wanted, AvailableOf(*this).height() - frame);
}

void CPortDetails::LayOut() {
  m_frame = FrameOf(*this);
  const DialogGrid measure(*this);
  const QSize margin(measure.Width(DialogGrid::kMargin), measure.Height(DialogGrid::kMargin));
  const int pitch = measure.Height(kRowPitch);
  const int rowHeight = measure.WholeHeight(DialogGrid::kRowHeight);
  const QSize radio(measure.Width(kRadioWidth), pitch);
  const QSize description(measure.Width(kDescriptionWidth), pitch);
  const int listWidth = radio.width() + description.width();
  const int bar = m_scroll->verticalScrollBar()->sizeHint().width();

  m_status->setGeometry(
      QRect({margin.width(), margin.height()}, QSize(listWidth, m_status->sizeHint().height())));
  const int rowsTop = m_status->geometry().bottom() + 1 + measure.Height(DialogGrid::kGap);
  const int width = listWidth + bar + 2 * margin.width();
  const int height = ClientHeight(rowsTop);
  setFixedSize(width, height);

  for (int i = 0; i < kPortRowCount; ++i) {
    const Row& row = m_rows[static_cast<std::size_t>(i)];
    row.radio->setGeometry(QRect({0, i * pitch}, radio));
    row.description->setGeometry(QRect({radio.width(), i * pitch}, description));
  }
  const bool any = !m_shown.isEmpty();
  const int below = std::max(kBelowRows - m_frame.top() - m_frame.bottom(), measure.Height(DialogGrid::kGap));
  // Slightly nearer to the rows than to the edge.
  const int buttonsTop = height - below * 2 / 3 - rowHeight;
  const int rows = static_cast<int>(m_shown.size());
  const int rowsSeen = std::min(rows, (height - below - rowHeight - rowsTop) / pitch);
  m_scroll->widget()->resize(listWidth, rows * pitch);
  m_scroll->setGeometry(margin.width(), rowsTop, listWidth + bar, rowsSeen * pitch);
  m_scroll->verticalScrollBar()->setSingleStep(pitch);
  m_scroll->setVisible(any);
  const QSize button(m_ok->minimumWidth(), rowHeight);
  const int right = width - margin.width();
  m_ok->setGeometry(QRect({right - button.width(), buttonsTop}, button));
  m_set->setGeometry(
      QRect({right - 2 * button.width() - measure.Width(DialogGrid::kGap), buttonsTop}, button));
  m_ok->setVisible(any);
  m_set->setVisible(any);
  KeepOnScreen();
}

void CPortDetails::KeepOnScreen() {
  if (!isVisible()) return;
  const QRect available = AvailableOf(*this);
  const int bottom = y() + OuterSize(*this).height();
  if (bottom > available.y() + available.height()) {
    move(x(), std::max(available.y(), available.y() + available.height() - OuterSize(*this).height()));
  }
}

}  // namespace quarn
