#include "ui/box.h"

#include <QApplication>
#include <QDialog>
#include <QWindow>
#include <algorithm>

namespace quarn {
namespace {

std::vector<const BoxOver*>& BoxesUp() {
  static std::vector<const BoxOver*> boxes;
  return boxes;
}

/// A window that stays below a box is one that a person works in, not what merely pops up.
bool IsPlainWindow(const QWidget& window) {
  return window.isVisible() && (window.windowType() == Qt::Dialog || window.windowType() == Qt::Window);
}

}  // namespace

QWidget* WindowForBox() {
  if (QWidget* active = QApplication::activeWindow()) return active;
  if (QWidget* modal = QApplication::activeModalWidget()) return modal;
  const QWidgetList windows = QApplication::topLevelWidgets();
  // The one to which the others belong, so that the box is in front of all of them.
  for (const bool belongsToNobody : {true, false}) {
    const auto found = std::find_if(windows.begin(), windows.end(), [belongsToNobody](const QWidget* each) {
      return IsPlainWindow(*each) && (each->parentWidget() == nullptr) == belongsToNobody;
    });
    if (found != windows.end()) return *found;
  }
  return nullptr;
}

int RunBox(QDialog& box) {
  QWidget* below = WindowForBox();
  const BoxOver over(below);
  // The window system keeps it in front of that window, which it may well outlive: a QWindow forgets one that
  // goes, and takes its handle out of the system's hands first.
  if (below != nullptr && below->windowHandle() != nullptr) {
    box.winId();
    box.windowHandle()->setTransientParent(below->windowHandle());
  }
  return box.exec();
}

BoxOver::BoxOver(QWidget* window) {
  for (QWidget* each = window; each != nullptr; each = each->parentWidget())
    m_below.emplace_back(each->window());
  // What is active may be a box itself, and that has no parent.
  for (const BoxOver* earlier : BoxesUp())
    m_below.insert(m_below.end(), earlier->m_below.begin(), earlier->m_below.end());
  BoxesUp().push_back(this);
}

BoxOver::~BoxOver() { std::erase(BoxesUp(), this); }

bool BoxOver::IsOver(const QWidget& window) {
  const auto stands = [&window](const BoxOver* box) {
    return std::find(box->m_below.begin(), box->m_below.end(), &window) != box->m_below.end();
  };
  return std::any_of(BoxesUp().begin(), BoxesUp().end(), stands);
}

}  // namespace quarn
