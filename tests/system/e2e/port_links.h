#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace quarn::test {

/// The folder of links that number a program's ports: COM3 is a link to a device.
class PortLinks {
 public:
  explicit PortLinks(const QString& folder);
  ~PortLinks();
  PortLinks(const PortLinks&) = delete;
  PortLinks& operator=(const PortLinks&) = delete;

  /// Makes the device this port, instead of the former device.
  bool Add(const QString& name, const QString& device);
  /// Makes a port lead to another device, without a moment in which it leads to none.
  bool Lead(const QString& name, const QString& device);
  bool Remove(const QString& name);
  /// All ports, also those whose device is gone; sorted.
  [[nodiscard]] QStringList Names() const;
  /// Opens `count` pseudo-terminals, which nobody serves, as COM<first>, COM<first + 1>, ...
  bool AddSilent(int count, int first);
  /// Removes everything that `AddSilent` has made.
  void RemoveSilent();

 private:
  struct Silent {
    QString name;
    int descriptor;
  };
  bool AddOneSilent(const QString& name);

  QString m_folder;
  std::vector<Silent> m_silent;
};

}  // namespace quarn::test
