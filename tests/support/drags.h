#pragma once

#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>
#include <QWindow>
#include <utility>

namespace quarn::test {

/// A file that another program drags over a window, as the system reports it. Some programs offer its name as
/// text as well.
class DraggedFile {
 public:
  DraggedFile(QWidget& over, QPoint at, Qt::DropActions offered, Qt::KeyboardModifiers held)
      : m_window(*over.window()->windowHandle()),
        m_at(over.mapTo(over.window(), at)),
        m_offered(offered),
        m_held(held) {
    m_data.setUrls({QUrl::fromLocalFile(QStringLiteral("/not/there.qrn"))});
    m_data.setText(QStringLiteral("/not/there.qrn"));
  }
  /// What the source is told; nothing is IgnoreAction.
  Qt::DropAction Enter() { return Told(QDragEnterEvent(m_at, m_offered, &m_data, Qt::LeftButton, m_held)); }
  /// Entered before.
  Qt::DropAction Move() { return Told(QDragMoveEvent(m_at, m_offered, &m_data, Qt::LeftButton, m_held)); }
  Qt::DropAction Drop() { return Told(QDropEvent(m_at, m_offered, &m_data, Qt::NoButton, m_held)); }

 private:
  template <typename Event>
  Qt::DropAction Told(Event event) {
    event.ignore();
    QApplication::sendEvent(&m_window, &event);
    return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
  }

  QWindow& m_window;
  const QPoint m_at;
  const Qt::DropActions m_offered;
  const Qt::KeyboardModifiers m_held;
  QMimeData m_data;
};

}  // namespace quarn::test
