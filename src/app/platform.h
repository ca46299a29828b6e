#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QUrl;
class QWidget;

/// What the program asks of the system: one file per system implements this. The rooms below have their own.
namespace quarn {

/// The configuration file named as an argument, or an empty text. `arguments` are the process's own,
/// with the program first; if the system provides the arguments as one text, that is used. A name of 259
/// or more characters ends the program: with its end it does not fit into the 260 of a path.
QString ReadFileArgument(const QStringList& arguments);

/// What --help adds about naming the file, as lines. Empty where there is nothing to know.
QString FileArgumentNote();

enum class TerminalStream { Output, Error };

/// Writes the text to standard output or standard error, visible to the user who started the program. Returns
/// false if that fails; for standard output the reason is then printed on standard error.
bool WriteOnTerminal(const QString& text, TerminalStream stream);

/// Whether what is written there is read on a terminal at once.
bool IsTerminal(TerminalStream stream);

enum class InstanceLock { Taken, TakenByAnother, Failed };

/// Takes the lock for one running program per user, named "Quarn.exe". It is kept until the process ends, in
/// any way; it cannot be released. If it fails, `reason` gives the system's text.
InstanceLock TakeInstanceLock(QString& reason);

/// Dots per inch of the screen that shows the window, as scaled by the desktop: 96 is 100 per cent.
int WindowDpi(const QWidget& window);

/// A line for a terminal: how to start the program on a desktop with this scaling, which is not supported.
/// Empty where only the desktop can be set, or the scaling is not known (0).
QString HowToStartAtScaling(int percent);

/// Height of the desktop's message font in pixels.
int MessageFontHeight();

/// Adds an item to the window's own menu: the system menu if the system has one, otherwise the context menu.
/// Where no font has the letters of `text`, the context menu shows `plainText`.
void AddWindowMenuItem(QWidget& window, const QString& text, const QString& plainText,
                       std::function<void()> chosen);

/// For keys in the window that its system acts on before Qt hears of them: Alt+F4 and Alt+Space on Windows.
/// If `take` returns true, the key does nothing more. Does nothing where a window manager has such keys.
void TakeSystemKeys(QWidget& window, const std::function<bool()>& take);

/// Whether the system's file dialog adds the suffix to a typed name before it asks whether a file may be
/// replaced.
bool SystemFileDialogAddsSuffix();

/// Opens the page in the user's browser; false if that fails. The browser has the session as it was before
/// DesktopSession.
bool OpenPage(const QUrl& page);

/// Chooses the display of a session that has two, and keeps the program from a session bus that does not
/// answer, and GTK from loading OpenGL, which nothing here uses. Make it before the application object, and
/// destroy it afterwards: programs that this one starts choose for themselves. Only the bus stays away, as Qt
/// may ask for it at any time.
class DesktopSession {
 public:
  /// `arguments`: the process's own, with the program first.
  explicit DesktopSession(const QStringList& arguments);
  ~DesktopSession();
  DesktopSession(const DesktopSession&) = delete;
  DesktopSession& operator=(const DesktopSession&) = delete;

 private:
  const bool m_choseDisplay;
  const bool m_spareGl;
};

}  // namespace quarn
