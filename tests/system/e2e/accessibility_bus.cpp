#include "system/e2e/accessibility_bus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVirtualObject>
#include <QFile>
#include <utility>
#include <vector>

namespace quarn::test {
namespace {

constexpr int kStartMs = kLongestWaitMs;
constexpr int kCallMs = 10000;
constexpr char kAccessible[] = "org.a11y.atspi.Accessible";
constexpr char kRoot[] = "/org/a11y/atspi/accessible/root";
constexpr char kServed[] = "/org/a11y";
constexpr char kBus[] = "org.a11y.Bus";
constexpr char kRegistry[] = "org.a11y.atspi.Registry";
constexpr char kNothing[] = "/org/a11y/atspi/null";

// Bits of the first word of a control's state.
constexpr uint kActive = 1U << 1;
constexpr uint kChecked = 1U << 4;
constexpr uint kEnabled = 1U << 8;
constexpr uint kFocused = 1U << 12;
constexpr uint kShowing = 1U << 25;

constexpr char kConfiguration[] = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path=%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
  </policy>
  <limit name="max_replies_per_connection">50000</limit>
</busconfig>
)";

/// Questions are all asked before the first answer is waited for: a window with a hundred controls is read
/// in the time of a few answers.
class Question {
 public:
  Question(const QDBusConnection& connection, const Control& whom, const char* interface, const char* method,
           const QVariantList& arguments = {})
      : m_call(Ask(connection, whom, interface, method, arguments)) {}

  static Question Property(const QDBusConnection& connection, const Control& whom, const char* name) {
    return {connection,
            whom,
            "org.freedesktop.DBus.Properties",
            "Get",
            {QString::fromLatin1(kAccessible), QString::fromLatin1(name)}};
  }

  /// Waits; an invalid value when there is no answer.
  QVariant Answer() {
    m_call.waitForFinished();
    const QDBusMessage reply = m_call.reply();
    if (reply.type() != QDBusMessage::ReplyMessage) return {};
    const QVariant value = reply.arguments().value(0);
    return value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
  }

 private:
  static QDBusPendingCall Ask(const QDBusConnection& connection, const Control& whom, const char* interface,
                              const char* method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        whom.service, whom.path, QString::fromLatin1(interface), QString::fromLatin1(method));
    message.setArguments(arguments);
    return connection.asyncCall(message, kCallMs);
  }

  QDBusPendingCall m_call;
};

QList<Control> References(const QVariant& answer, const Control& parent) {
  QList<Control> found;
  if (!answer.isValid()) return found;
  const auto list = answer.value<QDBusArgument>();
  list.beginArray();
  while (!list.atEnd()) {
    Control child;
    QDBusObjectPath path;
    list.beginStructure();
    list >> child.service >> path;
    list.endStructure();
    child.path = path.path();
    child.parentPath = parent.path;
    if (child.path != QLatin1String(kNothing)) found.push_back(child);
  }
  list.endArray();
  return found;
}

uint FirstStateWord(const QVariant& answer) {
  if (!answer.isValid()) return 0;
  const auto list = answer.value<QDBusArgument>();
  QList<uint> words;
  list >> words;
  return words.value(0);
}

QRect Place(const QVariant& answer) {
  if (!answer.isValid()) return {};
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  const auto extents = answer.value<QDBusArgument>();
  extents.beginStructure();
  extents >> x >> y >> width >> height;
  extents.endStructure();
  return {x, y, width, height};
}

/// All that is asked about one control.
class Questions {
 public:
  Questions(const QDBusConnection& connection, const Control& whom)
      : m_name(Question::Property(connection, whom, "Name")),
        m_description(Question::Property(connection, whom, "Description")),
        m_role(connection, whom, kAccessible, "GetRoleName"),
        m_state(connection, whom, kAccessible, "GetState"),
        // Zero asks for coordinates of the screen.
        m_place(connection, whom, "org.a11y.atspi.Component", "GetExtents", {0U}) {}

  void FillIn(Control& whom) {
    whom.name = m_name.Answer().toString();
    whom.description = m_description.Answer().toString();
    whom.role = m_role.Answer().toString();
    const uint state = FirstStateWord(m_state.Answer());
    whom.showing = (state & kShowing) != 0;
    whom.enabled = (state & kEnabled) != 0;
    whom.checked = (state & kChecked) != 0;
    whom.focused = (state & kFocused) != 0;
    whom.active = (state & kActive) != 0;
    whom.place = Place(m_place.Answer());
  }

 private:
  Question m_name;
  Question m_description;
  Question m_role;
  Question m_state;
  Question m_place;
};

}  // namespace

/// Tells programs where they are to show their windows: on this same bus. Programs wait for the answers,
/// so that it lives in a thread that has nothing else to do.
class AccessibilityService : public QDBusVirtualObject {
 public:
  explicit AccessibilityService(QString address) : m_address(std::move(address)) {}

  [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.member() == QLatin1String("GetAddress"))
      return connection.send(message.createReply(m_address));
    if (message.member() == QLatin1String("Embed")) {
      QDBusArgument root;
      root.beginStructure();
      root << connection.baseService() << QDBusObjectPath(QString::fromLatin1(kRoot));
      root.endStructure();
      return connection.send(message.createReply(QVariant::fromValue(root)));
    }
    return false;
  }

 private:
  const QString m_address;
};

AccessibilityBus::AccessibilityBus(const QString& folder) : m_connection(QString()) {
  const QString socket = folder + QStringLiteral("/accessibility");
  QFile configuration(folder + QStringLiteral("/accessibility.conf"));
  if (!configuration.open(QIODevice::WriteOnly)) qFatal("the bus cannot be configured");
  configuration.write(QString::fromLatin1(kConfiguration).arg(socket).toUtf8());
  configuration.close();
  m_daemon.start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--config-file=") + configuration.fileName(), QStringLiteral("--nofork"),
                  QStringLiteral("--nopidfile"), QStringLiteral("--print-address")});
  // It tells its address when it listens.
  QByteArray line;
  while (!line.endsWith('\n') && m_daemon.waitForReadyRead(kStartMs))
    line += m_daemon.readAllStandardOutput();
  if (!line.endsWith('\n')) qFatal("no message bus: %s", m_daemon.readAllStandardError().constData());
  m_address = QString::fromUtf8(line.trimmed());
  m_connection = QDBusConnection::connectToBus(m_address, socket);
  if (!m_connection.isConnected()) qFatal("the message bus takes no connections");
  m_service = std::make_unique<AccessibilityService>(m_address);
  m_connection.registerVirtualObject(QString::fromLatin1(kServed), m_service.get(), QDBusConnection::SubPath);
  m_service->moveToThread(&m_thread);
  m_thread.start();
  for (const char* name : {kRegistry, kBus})
    if (!m_connection.registerService(QString::fromLatin1(name))) qFatal("the name %s is taken", name);
}

AccessibilityBus::~AccessibilityBus() {
  m_connection.unregisterObject(QString::fromLatin1(kServed), QDBusConnection::UnregisterTree);
  QDBusConnection::disconnectFromBus(m_connection.name());
  m_thread.quit();
  m_thread.wait();
  End(m_daemon);
}

QStringList AccessibilityBus::Programs() const {
  const Control bus{.service = QStringLiteral("org.freedesktop.DBus"), .path = QStringLiteral("/")};
  QStringList names =
      Question(m_connection, bus, "org.freedesktop.DBus", "ListNames").Answer().toStringList();
  for (const QString& own :
       {bus.service, m_connection.baseService(), QString::fromLatin1(kBus), QString::fromLatin1(kRegistry)})
    names.removeAll(own);
  return names;
}

QList<Control> AccessibilityBus::Children(const QList<Control>& parents) const {
  std::vector<Question> lists;
  for (const Control& parent : parents) lists.emplace_back(m_connection, parent, kAccessible, "GetChildren");
  QList<Control> children;
  for (size_t i = 0; i < lists.size(); ++i)
    children += References(lists[i].Answer(), parents[static_cast<qsizetype>(i)]);
  std::vector<Questions> questions;
  for (const Control& child : std::as_const(children)) questions.emplace_back(m_connection, child);
  for (size_t i = 0; i < questions.size(); ++i) questions[i].FillIn(children[static_cast<qsizetype>(i)]);
  return children;
}

QList<Control> AccessibilityBus::Windows() const {
  QList<Control> roots;
  for (const QString& program : Programs()) {
    roots.push_back({});
    roots.back().service = program;
    roots.back().path = QString::fromLatin1(kRoot);
  }
  return Children(roots);
}

QList<Control> AccessibilityBus::Inside(const Control& window) const {
  QList<Control> all;
  QList<Control> level{window};
  while (!level.isEmpty()) {
    level = Children(level);
    all += level;
  }
  return all;
}

QString AccessibilityBus::Text(const Control& control) const {
  return Question(m_connection, control, "org.a11y.atspi.Text", "GetText", {0, -1}).Answer().toString();
}

}  // namespace quarn::test
