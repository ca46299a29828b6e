#include "app/identity_labels.h"

#include <QFont>
#include <QLabel>

#include "identity.h"
#include "ui/controls.h"
#include "ui/pictures.h"
#include "ui/placement.h"

namespace quarn {
namespace {

QLabel* CreateLabel(QWidget& parent, int controlId, const char* name, const char* text) {
  auto* label = WithControlId(new QLabel(QString::fromUtf8(text), &parent), controlId);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  return label;
}

}  // namespace

QLabel* CreateNameLabel(QWidget& parent) {
  QLabel* label = CreateLabel(parent, kNameLabelId, "nameAndVersion", identity::kNameAndVersion);
  QFont bold = parent.font();
  bold.setWeight(QFont::Bold);
  label->setFont(bold);
  return label;
}

QLabel* CreateDescriptionLabel(QWidget& parent) {
  return CreateLabel(parent, kDescriptionLabelId, "description", identity::kDescription);
}

QLabel* CreateBuildLabel(QWidget& parent) {
  return CreateLabel(parent, kBuildLabelId, "buildLine", identity::kBuildLine);
}

QLabel* CreateMakerLabel(QWidget& parent) {
  return CreateLabel(parent, kMakerLabelId, "maker", identity::kMaker);
}

QLabel* CreateLogoLabel(QWidget& parent, int heightUnits) {
  auto* label = new QLabel(&parent);
  label->setObjectName(QStringLiteral("logo"));
  label->setAccessibleName(QString::fromLatin1(identity::kName));
  const int side = MapDialogUnits(parent.font(), {0, 0, 0, heightUnits}).height();
  label->setPixmap(Logo({side, side}, parent.devicePixelRatioF()));
  return label;
}

}  // namespace quarn
