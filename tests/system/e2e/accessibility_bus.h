#pragma once

#include <QDBusConnection>
#include <QList>
#include <QRect>
#include <QString>
#include <QThread>
#include <memory>

#include "system/e2e/processes.h"

namespace quarn::test {

/// Something in a window of a program, as assistive technology sees it.
struct Control {
  /// Who has it, and what it is called there.
  QString service{};
  QString path{};
  /// What it is: "label", "push button", "menu item", ...
  QString role{};
  QString name{};
  QString description{};
  /// On the screen, in pixels.
  QRect place{};
  bool showing = false;
  bool enabled = false;
  bool checked = false;
  bool focused = false;
  /// A window that has the keyboard.
  bool active = false;
  QString parentPath{};
};

class AccessibilityService;

/// A session bus for one program, on which it shows what is in its windows; gone with the object. It has a
/// configuration and a socket of its own and starts no services: what a program asks of a session before
/// it shows anything is answered here.
class AccessibilityBus {
 public:
  /// The socket and the configuration are put into `folder`.
  explicit AccessibilityBus(const QString& folder);
  ~AccessibilityBus();
  AccessibilityBus(const AccessibilityBus&) = delete;
  AccessibilityBus& operator=(const AccessibilityBus&) = delete;

  [[nodiscard]] const QString& Address() const { return m_address; }
  /// The windows of all programs on the bus, in no certain order; popup menus are not among them.
  [[nodiscard]] QList<Control> Windows() const;
  /// Everything below a window, parents before their children; menus are there without being open.
  [[nodiscard]] QList<Control> Inside(const Control& window) const;
  /// What stands in a control that holds text, such as a line that is edited; empty for others.
  [[nodiscard]] QString Text(const Control& control) const;

 private:
  [[nodiscard]] QList<Control> Children(const QList<Control>& parents) const;
  [[nodiscard]] QStringList Programs() const;

  ChildProcess m_daemon;
  QString m_address;
  QDBusConnection m_connection;
  std::unique_ptr<AccessibilityService> m_service;
  QThread m_thread;
};

}  // namespace quarn::test
