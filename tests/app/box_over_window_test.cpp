// Shows every kind of box over every kind of window, and closes or deletes the window under it.

#include <QAbstractButton>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>
#include <QUrl>
#include <QWindow>
#include <optional>

#include "app/about_box.h"
#include "app/file_chooser.h"
#include "app/main_dialog_fixture.h"
#include "app/menu_state.h"
#include "serial/port_list.h"
#include "settings/settings_table.h"
#include "support/dialog_controls.h"
#include "support/scripted_line.h"
#include "support/waits.h"
#include "ui/box.h"
#include "ui/wait_cursor.h"
#include "ui/window_messages.h"

namespace quarn::test {
namespace {

constexpr int kFewTicks = 2;

/// Counts ticks, which other windows get too.
class Clock final : public PolledDialog {
 public:
  Clock() { StartTicks(); }
  int ticks = 0;

 protected:
  void OnTick(int /*ticks*/) override { ++ticks; }
};

/// Every other window has handled its requests.
void LetWindowsTick() {
  const Clock clock;
  ASSERT_TRUE(WaitUntil([&] { return clock.ticks >= kFewTicks; }));
}

/// While it exists, a box that closes by itself after some time stays.
class KeptUp final : public QObject {
 public:
  explicit KeptUp(QObject& box) { box.installEventFilter(this); }

 protected:
  bool eventFilter(QObject* /*box*/, QEvent* event) override { return event->type() == QEvent::Timer; }
};

/// Waits for each box, calls `during` and closes the box with Escape.
class BoxWatch {
 public:
  using During = std::function<void(QWidget& box)>;
  explicit BoxWatch(During during) : m_during(std::move(during)) {
    m_timer.callOnTimeout([this] { Look(); });
    m_timer.start(1);
  }
  int came = 0;

 private:
  void Look() {
    QPointer<QWidget> box = QApplication::activeModalWidget();
    if (box.isNull() || !box->isVisible() || box == m_last) return;
    m_last = box;
    ++came;
    {
      const KeptUp kept(*box);
      m_during(*box);
    }
    if (!box.isNull() && box->isVisible()) QTest::keyClick(box.data(), Qt::Key_Escape);
  }
  QTimer m_timer;
  QPointer<QWidget> m_last;
  During m_during;
};

struct BoxCase {
  const char* name;
  void (*show)();
};

const QString kSuffix = QStringLiteral(": Information");
const QString kText = QStringLiteral("COM port list has been updated.");

void ShowAbout() {
  WindowMessages messages;
  CAboutBox box([](const QUrl& /*page*/) { return true; }, messages);
  RunBox(box);
}

const std::vector<BoxCase> kBoxes{
    {"Error", [] { WindowMessages().ShowErrorMessage(kSuffix, kText, kText, kText); }},
    {"Information", [] { WindowMessages().ShowInformationMessage(kSuffix, kText, kText, kText); }},
    {"Confirmation",
     [] { EXPECT_FALSE(WindowMessages().AskConfirmation(kSuffix, kText, {}, {}, AnswerByDefault::Agree)); }},
    {"YesNo",
     [] { EXPECT_FALSE(WindowMessages().AskYesNo(kSuffix, kText, {}, {}, AnswerByDefault::Agree)); }},
    {"Simple", [] { EXPECT_FALSE(WindowMessages().AskSimple(kText, AnswerByDefault::Agree)); }},
    {"SimpleYesNo", [] { EXPECT_FALSE(WindowMessages().AskSimpleYesNo(kText, AnswerByDefault::Agree)); }},
    {"Transient", [] { WindowMessages().ShowTransientMessage(kText, {}); }},
    {"Plain", [] { WindowMessages().ShowPlainMessage(kText); }},
    {"About", ShowAbout},
};

struct Below {
  const char* name;
  const char* objectName;  ///< the window's
  int command;             ///< what opens it; 0 for the main dialog
};

void PrintTo(const Below& window, std::ostream* out) { *out << window.name; }

const std::vector<Below> kWindows{
    {"Main", "CQuarnDlg", 0},
    {"Terminal", "CTerminalScreen", command::kTerminalScreen},
    {"FunctionKeys", "CSetMem", command::kFunctionKeyTable},
    {"CommandFormat", "CCommandFormat", command::kCommandFormat},
    {"ScreenOption", "CScreenOption", command::kScreenOption},
    {"MainOption", "CMainOption", command::kMainOption},
    {"PortNumber", "CPortNum", command::kPortNumber},
    {"DetailedPortList", "CPortDetails", command::kDetailedPortList},
    {"PortSettings", "CPortSettings", command::kPortSettings},
};

/// The main dialog on the heap, where it can be deleted, with real boxes.
class BoxStage : public AppTest {
 protected:
  BoxStage()
      : real(m_folder, CreateLineOpener(PortsFolder(m_folder)), std::make_unique<ListedPorts>(),
             std::make_unique<WindowMessages>(), std::make_unique<CountedIndicator>()),
        listed(static_cast<ListedPorts&>(*real.portSource)) {}
  void SetUp() override {
    MakeFolders();
    WriteSettings(real.workingSettingsFile, {});
    real.settings = DefaultSettings();
    ASSERT_NO_FATAL_FAILURE(ShowMain());
  }
  void ShowMain() {
    if (!main) main = std::make_unique<CQuarnDlg>(real);
    ASSERT_NO_FATAL_FAILURE(ShowActive(*main));
    main->StartTimer();
  }
  void ListPorts(int count) {
    Present(count);
    ASSERT_TRUE(RefreshPortList(listed, real.connection));
  }
  void Present(int count) { listed.present = Adapters(count); }
  /// Opens the window and gives it the keyboard.
  QPointer<QDialog> Open(int item) {
    for (QAction* action : main->findChildren<QAction*>()) {
      if (action->property(kControlIdProperty) == item) action->trigger();
    }
    for (const Below& each : kWindows) {
      if (each.command == item) return Activated(each.objectName);
    }
    return nullptr;
  }
  QPointer<QDialog> Activated(const char* objectName) {
    for (QWidget* each : QApplication::topLevelWidgets()) {
      auto* found = qobject_cast<QDialog*>(each);
      if (found == nullptr || !found->isVisible() || found->objectName() != QLatin1String(objectName))
        continue;
      ShowActive(*found);
      EXPECT_TRUE(WaitUntil([&] { return WindowForBox() == found; }));
      return found;
    }
    ADD_FAILURE() << "no " << objectName;
    return nullptr;
  }
  static bool Goes(const QPointer<QDialog>& window) {
    return WaitUntil([&] { return window.isNull() || !window->isVisible(); });
  }

  Program real;
  ListedPorts& listed;
  std::unique_ptr<CQuarnDlg> main;
};

class BoxOverWindow : public BoxStage, public ::testing::WithParamInterface<Below> {
 protected:
  /// For each kind of box: opens the window, calls `during` while the box is in front of it, and then
  /// `after`.
  void UnderEachBox(const std::function<void(QPointer<QDialog>& below, QWidget& box)>& during,
                    const std::function<void(const QPointer<QDialog>& below)>& after) {
    for (const BoxCase& kind : kBoxes) {
      SCOPED_TRACE(kind.name);
      real.state.requests = {};
      ASSERT_NO_FATAL_FAILURE(ShowMain());
      main->UpdateMenuState();
      ListPorts(3);
      QPointer<QDialog> below =
          GetParam().command != 0 ? Open(GetParam().command) : Activated(GetParam().objectName);
      ASSERT_FALSE(below.isNull());
      const BoxWatch watch([&](QWidget& box) { during(below, box); });
      kind.show();
      EXPECT_EQ(watch.came, 1);
      after(below);
      // A deleted window has not cleared its flag.
      if (below.isNull()) real.state.open = {};
    }
  }
};

TEST_P(BoxOverWindow, BelongsToNobodyAndStandsInFront) {
  UnderEachBox(
      [](const QPointer<QDialog>& below, QWidget& box) {
        EXPECT_EQ(box.parent(), nullptr);
        EXPECT_EQ(box.windowHandle()->transientParent(), below->windowHandle());
        EXPECT_EQ(box.windowModality(), Qt::ApplicationModal);
        EXPECT_TRUE(WaitUntil([&] { return QApplication::activeWindow() == &box; }));
      },
      [](const QPointer<QDialog>& below) {
        ASSERT_FALSE(below.isNull());
        EXPECT_TRUE(below->isVisible());
        EXPECT_TRUE(WaitUntil([&] { return QApplication::activeWindow() == below; }));
      });
}

TEST_P(BoxOverWindow, IsOverBeforeTheWindowClosesThatIsAskedTo) {
  UnderEachBox(
      [](const QPointer<QDialog>& below, QWidget& box) {
        EXPECT_FALSE(below->close());
        LetWindowsTick();
        EXPECT_TRUE(box.isVisible());
        ASSERT_FALSE(below.isNull());
        EXPECT_TRUE(below->isVisible());
      },
      [](const QPointer<QDialog>& below) {
        ASSERT_FALSE(below.isNull()) << "whoever showed the box may still need it";
        EXPECT_TRUE(Goes(below));
      });
}

TEST_P(BoxOverWindow, IsOverBeforeTheWindowClosesOnRequest) {
  UnderEachBox(
      [this](const QPointer<QDialog>& below, QWidget& box) {
        RaiseCloseRequests(real.state.requests);
        LetWindowsTick();
        EXPECT_TRUE(box.isVisible());
        ASSERT_FALSE(below.isNull());
        EXPECT_TRUE(below->isVisible());
      },
      [](const QPointer<QDialog>& below) {
        // These two get no such requests.
        const bool asked = GetParam().command != 0 && GetParam().command != command::kPortSettings;
        if (asked) {
          EXPECT_TRUE(Goes(below));
        }
      });
}

TEST_P(BoxOverWindow, OutlivesTheWindow) {
  UnderEachBox(
      [this](QPointer<QDialog>& below, QWidget& box) {
        if (below == main.get()) {
          main.reset();
        } else {
          delete below;
        }
        LetWindowsTick();
        EXPECT_TRUE(box.isVisible());
        EXPECT_EQ(box.windowHandle()->transientParent(), nullptr);
        box.repaint();
      },
      [](const QPointer<QDialog>& below) { EXPECT_TRUE(below.isNull()); });
}

INSTANTIATE_TEST_SUITE_P(All, BoxOverWindow, ::testing::ValuesIn(kWindows),
                         [](const auto& each) { return std::string(each.param.name); });

using Boxes = BoxStage;

TEST_F(Boxes, TheListThatOnePortTooManyClosesIsThereUntilTheyAreOver) {
  ListPorts(30);
  static Journal calls;
  real.connection.handle = PortHandle(std::make_shared<ScriptedLine>(calls));
  real.connection.connected.Update(PortChange::Opened);
  real.state.currentPortName = QStringLiteral("COM7");
  const QPointer<QDialog> list = Open(command::kDetailedPortList);
  ASSERT_FALSE(list.isNull());
  QStringList told;
  const BoxWatch watch([&](QWidget& box) {
    told.append(box.accessibleDescription());
    const bool overTheList = !list.isNull() && BoxOver::IsOver(*list);
    EXPECT_TRUE(overTheList || told.size() > 1);
    // Back to thirty while the first message is up: the second comes while the list is about to close.
    Present(30);
    LetWindowsTick();
    // The window stays under its box, and closes after it.
    // It need not be deleted yet: this box may block the event loop that deletes it.
    const auto isClosed = [&] { return list.isNull() || !list->isVisible(); };
    EXPECT_TRUE(WaitUntil([&] { return isClosed() == !overTheList; }));
  });
  Present(31);
  ASSERT_TRUE(WaitUntil([&] { return list.isNull() && told.size() == 2; }));
  ASSERT_TRUE(WaitUntil([&] { return !BoxOver::IsOver(*main); }));
  EXPECT_EQ(told, (QStringList{QStringLiteral("Too many COM ports to display in the detailed list.\nThe "
                                              "\"Detailed COM Port List\" will be closed."),
                               kText}));
}

TEST_F(Boxes, ShowTheUsualCursorWhileTheProgramWaits) {
  const auto shape = [] { return QGuiApplication::overrideCursor()->shape(); };
  WaitCursor wait;
  wait.Show();
  int shown = 0;
  const BoxWatch watch([&](QWidget& /*box*/) {
    ++shown;
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(shape(), Qt::ArrowCursor);
  });
  for (const BoxCase& kind : kBoxes) {
    SCOPED_TRACE(kind.name);
    kind.show();
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(shape(), Qt::WaitCursor);
  }
  EXPECT_EQ(static_cast<std::size_t>(shown), kBoxes.size());
  wait.Restore();
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(Boxes, KeepATransactionThatIsAskedForWaiting) {
  const QPointer<QDialog> terminal = Open(command::kTerminalScreen);
  ASSERT_FALSE(terminal.isNull());
  QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("id"));
  bool over = false;
  const BoxWatch watch([&](QWidget& /*box*/) {
    real.state.requests.send = true;
    LetWindowsTick();
    EXPECT_EQ(real.log.LineCount(), 0);
    EXPECT_TRUE(real.state.requests.send);
    over = true;
  });
  WindowMessages().ShowErrorMessage(kSuffix, kText, {}, {});
  EXPECT_TRUE(over);
  EXPECT_TRUE(WaitUntil([&] { return real.log.LineCount() > 0; }));
}

TEST_F(Boxes, OverAnotherWindowLetARequestThrough) {
  const QPointer<QDialog> terminal = Open(command::kTerminalScreen);
  ASSERT_FALSE(terminal.isNull());
  ShowActive(*main);
  ASSERT_TRUE(WaitUntil([&] { return WindowForBox() == main.get(); }));
  const BoxWatch watch([&](QWidget& box) {
    real.state.requests.close.Add(Window::TerminalScreen);
    EXPECT_TRUE(WaitUntil([&] { return terminal.isNull(); }));
    EXPECT_TRUE(box.isVisible());
  });
  WindowMessages().ShowTransientMessage(kText, {});
  EXPECT_EQ(watch.came, 1);
}

TEST_F(Boxes, OverABoxKeepTheWindowsUnderBoth) {
  const QPointer<QDialog> terminal = Open(command::kTerminalScreen);
  ASSERT_FALSE(terminal.isNull());
  int told = 0;
  const BoxWatch watch([&](QWidget& about) {
    EXPECT_TRUE(WaitUntil([&] { return WindowForBox() == &about; }));
    const BoxWatch inner([&](QWidget& box) {
      ++told;
      EXPECT_EQ(box.windowHandle()->transientParent(), about.windowHandle());
      EXPECT_TRUE(BoxOver::IsOver(about));
      EXPECT_TRUE(BoxOver::IsOver(*terminal));
      EXPECT_TRUE(BoxOver::IsOver(*main)) << "to which the other belongs";
    });
    WindowMessages().ShowErrorMessage(kSuffix, kText, {}, {});
    EXPECT_FALSE(BoxOver::IsOver(about));
    EXPECT_TRUE(BoxOver::IsOver(*terminal));
  });
  ShowAbout();
  EXPECT_EQ(told, 1);
  EXPECT_FALSE(BoxOver::IsOver(*terminal));
  EXPECT_FALSE(BoxOver::IsOver(*main));
}

/// A window shows a box, and meanwhile it gets a request to close.
struct Deed {
  const char* name;
  int window;
  void (*prepare)(Program& program, QDialog& window);
  const char* button;  ///< its object name
};

class BusyWindow : public BoxStage, public ::testing::WithParamInterface<Deed> {};

TEST_P(BusyWindow, EndsWhatItDoesBeforeItCloses) {
  const Deed& deed = GetParam();
  ListPorts(3);
  const QPointer<QDialog> below = Open(deed.window);
  ASSERT_FALSE(below.isNull());
  deed.prepare(real, *below);
  const BoxWatch watch([&](QWidget&) {
    // The box is over another window: only its own work keeps this one open.
    RaiseCloseRequests(real.state.requests);
    below->close();
    LetWindowsTick();
    ASSERT_FALSE(below.isNull());
    EXPECT_TRUE(below->isVisible());
  });
  auto* button = below->findChild<QAbstractButton*>(QLatin1String(deed.button));
  ASSERT_NE(button, nullptr);
  // Another window has the keyboard: the message comes up over that one.
  ShowActive(*main);
  ASSERT_TRUE(WaitUntil([&] { return WindowForBox() == main.get(); }));
  button->click();
  EXPECT_GE(watch.came, 1);
  ASSERT_FALSE(below.isNull());
  EXPECT_TRUE(Goes(below));
}

void Nothing(Program& /*program*/, QDialog& /*window*/) {}

INSTANTIATE_TEST_SUITE_P(
    All, BusyWindow,
    ::testing::Values(
        Deed{"TerminalSend", command::kTerminalScreen, Nothing, "SEND"},
        Deed{"PortNumberSet", command::kPortNumber,
             [](Program& program, QDialog& window) {
               program.connection.portNames.clear();
               window.findChild<QAbstractButton*>(QStringLiteral("setButton"))->setEnabled(true);
             },
             "setButton"},
        Deed{"FunctionKeyTableSave", command::kFunctionKeyTable,
             [](Program&, QDialog& window) {
               auto* edit = window.findChild<QAbstractButton*>(QStringLiteral("EDIT"));
               edit->click();
               window.findChild<QLineEdit*>(QStringLiteral("MEM0"))->setText(QStringLiteral("new"));
               edit->click();
             },
             "SAVE"},
        Deed{"DetailedListSet", command::kDetailedPortList,
             [](Program& program, QDialog& window) {
               program.connection.portNames.clear();
               window.findChild<QAbstractButton*>(QStringLiteral("setButton"))->setEnabled(true);
             },
             "setButton"},
        Deed{"PortSettingsDefault", command::kPortSettings, Nothing, "defaultButton"},
        Deed{"ScreenOptionInputMax", command::kScreenOption,
             [](Program& program, QDialog&) { program.state.open.Add(Window::TerminalScreen); }, "length56"}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_F(Boxes, TheMainDialogEndsTheProgramOnlyWhenTheyAreOver) {
  const QPointer<QDialog> terminal = Open(command::kTerminalScreen);
  ASSERT_FALSE(terminal.isNull());
  const BoxWatch watch([&](QWidget& box) {
    EXPECT_FALSE(main->close());
    EXPECT_TRUE(main->isVisible());
    EXPECT_TRUE(terminal->isVisible());
    EXPECT_TRUE(box.isVisible());
  });
  WindowMessages().ShowErrorMessage(kSuffix, kText, {}, {});
  EXPECT_EQ(watch.came, 1);
  EXPECT_TRUE(WaitUntil([&] { return !main->isVisible(); }));
}

TEST_F(Boxes, TheChoiceOfAFileKeepsTheMainDialog) {
  WindowMessages boxes;
  FileChooserDialog chooser(main.get(), boxes);
  const BoxWatch watch([&](QWidget& box) {
    EXPECT_TRUE(BoxOver::IsOver(*main));
    EXPECT_FALSE(main->close());
    // A message over it has no parent either.
    EXPECT_TRUE(WaitUntil([&] { return WindowForBox() == &box; }));
  });
  EXPECT_EQ(chooser.AskOpenFile({kText, {QStringLiteral("All (*)")}, QStringLiteral("qrn"), {}, m_folder}),
            QString());
  EXPECT_EQ(watch.came, 1);
  EXPECT_TRUE(WaitUntil([&] { return !main->isVisible(); }));
}

TEST(BoxWithoutWindows, APlainMessageStandsInFrontOfOtherPrograms) {
  ASSERT_EQ(WindowForBox(), nullptr);
  const BoxWatch watch([](QWidget& box) {
    EXPECT_TRUE(box.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(box.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
  });
  WindowMessages().ShowPlainMessage(kText);
  EXPECT_EQ(watch.came, 1);
}

}  // namespace
}  // namespace quarn::test
