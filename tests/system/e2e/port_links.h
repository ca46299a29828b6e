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

  /// Makes the device a port, in place of what had that name.
  bool Add(const QString& name, const QString& device);
  /// Lets a port lead to another device; at every moment it leads to one.
  bool Lead(const QString& name, const QString& device);
  bool Remove(const QString& name);
  /// All there are, also those whose device has gone; sorted.
  [[nodiscard]] QStringList Names() const;
  /// Opens `count` pseudo-terminals, which nobody serves, as COM<first>, COM<first + 1>, ...
  bool AddSilent(int count, int first);
  /// Takes away everything that `AddSilent` has made.
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
