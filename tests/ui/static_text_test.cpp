#include "ui/static_text.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

namespace quarn::test {
namespace {

constexpr QSize kLineSize(400, 20);

QImage Canvas(double scale) {
  QImage canvas(kLineSize * scale, QImage::Format_ARGB32_Premultiplied);
  canvas.setDevicePixelRatio(scale);
  canvas.fill(Qt::white);
  return canvas;
}

QImage Shown(StaticText& line, double scale) {
  QImage canvas = Canvas(scale);
  line.render(&canvas, {}, {}, QWidget::RenderFlags());
  return canvas;
}

QImage Drawn(const StaticText& line, const QString& text, double scale) {
  QImage canvas = Canvas(scale);
  QPainter painter(&canvas);
  painter.setFont(line.font());
  painter.setPen(line.palette().color(QPalette::WindowText));
  painter.drawText(QRect(QPoint(), kLineSize), Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, text);
  return canvas;
}

/// Whatever is kept of a line for the next time, it looks like text that is drawn anew.
TEST(StaticText, LooksLikeTextThatIsDrawnOnce) {
  StaticText line(nullptr);
  line.resize(kLineSize);
  const QStringList texts{QStringLiteral("0001 [meas?]"), QStringLiteral("<STX>+1.2345E+00 V<ETX> fi  AV"),
                          QStringLiteral("\u65e5\u672c \u00e9 \u20ac"), QStringLiteral("  spaces  "),
                          QStringLiteral("<b>&amp;</b>")};
  // The second round shows what was kept, the later ones with another scale, font and colour.
  for (const double scale : {1.0, 1.0, 1.5, 2.0, 1.0}) {
    for (const QString& text : texts) {
      line.SetText(text + u'\r');
      EXPECT_EQ(Shown(line, scale), Drawn(line, text, scale)) << qPrintable(text) << " at " << scale;
    }
  }
  QFont larger = line.font();
  larger.setPointSizeF(larger.pointSizeF() * 1.3);
  line.setFont(larger);
  QPalette red = line.palette();
  red.setColor(QPalette::WindowText, Qt::red);
  line.setPalette(red);
  for (const QString& text : texts) {
    line.SetText(text);
    EXPECT_EQ(Shown(line, 1.0), Drawn(line, text, 1.0)) << qPrintable(text) << " in red";
  }
}

TEST(StaticText, AnEmptyLineShowsNothing) {
  StaticText line(nullptr);
  line.resize(kLineSize);
  line.SetText(QStringLiteral("text"));
  EXPECT_NE(Shown(line, 1.0), Canvas(1.0));
  line.SetText(QStringLiteral("\r"));
  EXPECT_EQ(Shown(line, 1.0), Canvas(1.0));
}

}  // namespace
}  // namespace quarn::test
