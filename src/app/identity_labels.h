#pragma once

#include <QString>

class QLabel;
class QWidget;

namespace quarn {

/// The labels of the about box and the splash that describe the program, by control number.
inline constexpr int kNameLabelId = 1165;
inline constexpr int kDescriptionLabelId = 1166;
inline constexpr int kMakerLabelId = 1168;
inline constexpr int kBuildLabelId = 1169;

/// Each creates a child of `parent`; the name is bold.
QLabel* CreateNameLabel(QWidget& parent);
QLabel* CreateDescriptionLabel(QWidget& parent);
QLabel* CreateBuildLabel(QWidget& parent);
QLabel* CreateMakerLabel(QWidget& parent);
/// The logo as a picture of `heightUnits` dialog units.
QLabel* CreateLogoLabel(QWidget& parent, int heightUnits);

}  // namespace quarn
