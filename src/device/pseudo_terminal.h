#pragma once

#include <string>

namespace quarn::device {

/// The far end of a serial line: a pseudo-terminal whose other side opens like a COM port. A pseudo-terminal
/// is not a UART: it has no modem lines and no speed.
///
/// The near side is kept open here too, so that programs may open and close it. Throws std::system_error.
class PseudoTerminal {
 public:
  PseudoTerminal();
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  /// The device node that programs open, such as "/dev/pts/5".
  [[nodiscard]] const std::string& NodePath() const { return m_nodePath; }
  /// The descriptor of the far end, non-blocking; -1 after HangUp.
  [[nodiscard]] int Descriptor() const { return m_far; }
  /// Closes the far end: programs that have the line open see it break.
  void HangUp();

 private:
  int m_far = -1;
  int m_near = -1;
  std::string m_nodePath;
};

/// A symbolic link that exists as long as the object. Replaces another link of that name if that one leads
/// nowhere or to a pseudo-terminal, but nothing else.
/// Throws std::system_error.
class NodeLink {
 public:
  NodeLink(std::string linkPath, const std::string& target);
  ~NodeLink();
  NodeLink(const NodeLink&) = delete;
  NodeLink& operator=(const NodeLink&) = delete;

 private:
  std::string m_linkPath;
  std::string m_target;
};

}  // namespace quarn::device
