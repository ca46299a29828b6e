#include "app/splash_page.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QRegion>
#include <QTimerEvent>
#include <QVBoxLayout>

#include "app/identity_labels.h"
#include "identity.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr QRect kUnits{0, 0, 220, 82};
constexpr int kPageMarginUnits = 14;
constexpr int kLineGapUnits = 4;
constexpr int kSplashLogoUnits = 52;

}  // namespace

CSplashPage::CSplashPage(QWidget* owner, int displayMs)
    : PlacedDialog(owner, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_displayMs(displayMs) {
  setObjectName(QStringLiteral("CSplashPage"));
  setAccessibleName(QString::fromLatin1(identity::kName));
  setModal(true);
  const QRect units = MapDialogUnits(font(), {kPageMarginUnits, kLineGapUnits, 0, 0});
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(units.x(), 0, units.x(), 0);
  row->setSpacing(units.x());
  row->addStretch();
  row->addWidget(CreateLogoLabel(*this, kSplashLogoUnits), 0, Qt::AlignVCenter);
  auto* column = new QVBoxLayout;
  column->setSpacing(units.y());
  column->addStretch();
  column->addWidget(CreateNameLabel(*this));
  column->addWidget(CreateDescriptionLabel(*this));
  column->addWidget(CreateBuildLabel(*this));
  column->addWidget(CreateMakerLabel(*this));
  column->addStretch();
  row->addLayout(column);
  row->addStretch();
  // Never smaller than its texts, in case a font does not match its dialog units.
  setFixedSize(MapDialogUnits(font(), kUnits).size().expandedTo(row->sizeHint()));
}

void CSplashPage::showEvent(QShowEvent* event) {
  PlacedDialog::showEvent(event);
  if (!m_timer.isActive()) m_timer.start(m_displayMs, Qt::PreciseTimer, this);
}

void CSplashPage::timerEvent(QTimerEvent* event) {
  PlacedDialog::timerEvent(event);
  if (event->timerId() != m_timer.timerId()) return;
  m_timer.stop();
  hide();
  done(kResult);
}

void CSplashPage::closeEvent(QCloseEvent* event) { event->ignore(); }

void CSplashPage::keyPressEvent(QKeyEvent* /*event*/) {}

void CSplashPage::paintEvent(QPaintEvent* /*event*/) {
  // Without a frame of its own its edge would be invisible on a bright desktop.
  QPainter painter(this);
  const QColor colour = palette().color(QPalette::Mid);
  const QRegion edge = QRegion(rect()) - rect().adjusted(1, 1, -1, -1);
  for (const QRect& side : edge) painter.fillRect(side, colour);
}

}  // namespace quarn
