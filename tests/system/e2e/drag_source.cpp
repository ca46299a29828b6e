#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>
#include <cstdio>

namespace {

void Tell(const char* what) {
  std::puts(what);
  std::fflush(stdout);
}

/// A window of another program. When pressed and moved, it drags the files named on the command line, and
/// prints the result.
class Source : public QLabel {
 public:
  Source() : QLabel(QStringLiteral("Drag me")) {
    setWindowTitle(QStringLiteral("Drag Source"));
    setFixedSize(160, 80);
  }

 protected:
  void mousePressEvent(QMouseEvent* event) override { event->accept(); }
  void mouseMoveEvent(QMouseEvent* event) override {
    if (event->buttons() != Qt::LeftButton) return;
    QList<QUrl> urls;
    for (const QString& path : QApplication::arguments().mid(1)) urls.append(QUrl::fromLocalFile(path));
    auto* files = new QMimeData;
    files->setUrls(urls);
    auto* drag = new QDrag(this);  // gone by itself after the drop
    drag->setMimeData(files);
    connect(drag, &QDrag::actionChanged, this,
            [](Qt::DropAction action) { Tell(action == Qt::IgnoreAction ? "refused" : "welcome"); });
    // After the drop the other program still reads the data. Then the drag is deleted.
    connect(drag, &QObject::destroyed, this, [] { Tell("over"); });
    Tell("dragging");
    // As file managers do. Whoever is told of a move deletes the file.
    const bool mayMove = event->modifiers().testFlag(Qt::ShiftModifier);
    const Qt::DropAction done = drag->exec(mayMove ? Qt::CopyAction | Qt::MoveAction : Qt::CopyAction);
    Tell(done == Qt::CopyAction ? "taken" : done == Qt::MoveAction ? "moved" : "left");
  }
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  Source source;
  source.move(20, 850);
  source.show();
  return QApplication::exec();
}
