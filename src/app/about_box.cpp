#include "app/about_box.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QUrl>
#include <QVBoxLayout>
#include <utility>

#include "app/identity_labels.h"
#include "app/link_label.h"
#include "base/message_operations.h"
#include "identity.h"
#include "ui/controls.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kOkId = 1;
constexpr int kMarginUnits = 11;
constexpr int kGapUnits = 4;
constexpr int kButtonWidthUnits = 50;
constexpr int kLogoUnits = 44;
/// Wide enough for the long caption beside the window manager's buttons.
constexpr int kLeastWidthUnits = 200;

}  // namespace

CAboutBox::CAboutBox(LinkOpener openLink, MessageOperations& messages)
    : PlacedDialog(nullptr,
                   Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_openLink(std::move(openLink)),
      m_messages(messages) {
  setObjectName(QStringLiteral("CAboutBox"));
  // The blank at the end belongs to it.
  setWindowTitle(QStringLiteral("About  Quarn - Serial Port Terminal "));
  setModal(true);
  const QRect units = MapDialogUnits(font(), {kMarginUnits, kGapUnits, 0, 0});
  auto* whole = new QVBoxLayout(this);
  whole->setSizeConstraint(QLayout::SetFixedSize);
  whole->setContentsMargins(units.x(), units.x(), units.x(), units.x());
  whole->setSpacing(units.x());
  auto* upper = new QHBoxLayout;
  upper->setSpacing(units.x());
  upper->addWidget(CreateLogoLabel(*this, kLogoUnits), 0, Qt::AlignTop);
  upper->addLayout(CreateLabels(), 1);
  whole->addLayout(upper);
  whole->addStrut(MapDialogUnits(font(), {0, 0, kLeastWidthUnits - 2 * kMarginUnits, 0}).width());
  QPushButton* ok = CreateOkButton();
  whole->addWidget(ok, 0, Qt::AlignRight);
  ok->setFocus();
}

QVBoxLayout* CAboutBox::CreateLabels() {
  auto* column = new QVBoxLayout;
  column->setSpacing(MapDialogUnits(font(), {0, kGapUnits, 0, 0}).y());
  column->addWidget(CreateNameLabel(*this));
  column->addWidget(CreateDescriptionLabel(*this));
  column->addWidget(CreateBuildLabel(*this));
  auto* empty = new QLabel(QString(), this);
  empty->setObjectName(QStringLiteral("emptyLabel"));
  column->addWidget(empty);
  column->addWidget(CreateMakerLabel(*this));
  auto* tagline = new QLabel(QStringLiteral("Simple and high performance"), this);
  tagline->setObjectName(QStringLiteral("tagline"));
  column->addWidget(tagline);
  auto* link = WithControlId(new LinkLabel(
                                 QString::fromLatin1(identity::kWebAddress), [this] { OpenPage(); }, this),
                             kLinkId);
  link->setObjectName(QStringLiteral("link"));
  column->addWidget(link, 0, Qt::AlignLeft);
  return column;
}

QPushButton* CAboutBox::CreateOkButton() {
  auto* ok = WithControlId(new DialogButton(QStringLiteral("OK"), this), kOkId);
  ok->setObjectName(QStringLiteral("okButton"));
  ok->setMinimumWidth(DialogGrid(*this).WholeWidth(kButtonWidthUnits));
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  return ok;
}

void CAboutBox::OpenPage() {
  const QString page = QString::fromLatin1(identity::kWebPage);
  if (m_openLink(QUrl(page))) {
    m_linkVisited = true;
    return;
  }
  m_messages.ShowErrorMessage(QStringLiteral(": Error"), QString(),
                              QStringLiteral("The web browser could not be opened."), page);
}

}  // namespace quarn
