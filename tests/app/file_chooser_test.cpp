#include "app/file_chooser.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <deque>
#include <functional>
#include <optional>

#include "support/recorded_messages.h"
#include "support/waits.h"

namespace quarn::test {
namespace {

/// The font of every window is so high, in pixels.
class FontHeight {
 public:
  explicit FontHeight(int pixels) : m_before(QApplication::font()) {
    QFont font = m_before;
    font.setPixelSize(pixels);
    QApplication::setFont(font);
  }
  ~FontHeight() { QApplication::setFont(m_before); }
  FontHeight(const FontHeight&) = delete;
  FontHeight& operator=(const FontHeight&) = delete;

 private:
  const QFont m_before;
};

/// Answers the dialogs that the chooser shows, one step each: a step runs when a dialog that was not there
/// before waits for the person.
class FileChooserDialogs : public ::testing::Test {
 protected:
  FileChooserDialogs() {
    // Keys and clicks of a test do not reach the system's own dialog.
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    // Where Qt's own dialog keeps the widths of its columns.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_widths.path());
    m_timer.setInterval(20);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { Answer(); });
    m_timer.start();
  }
  void Put(const QString& name, const QByteArray& bytes = "x") const {
    QFile file(folder.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
  }
  FileQuestion Question(const QString& initialName = QString()) const {
    return {QStringLiteral("The title"),
            {QStringLiteral("QRN Files (*.qrn) (*.qrn)"), QStringLiteral("All Files (*.*) (*)")},
            QStringLiteral("qrn"),
            initialName,
            QString()};
  }
  /// What the person does with the file dialog that is up.
  void Then(std::function<void(QFileDialog&)> step) {
    m_steps.emplace_back([step = std::move(step)](QWidget& widget) {
      auto* dialog = qobject_cast<QFileDialog*>(&widget);
      ASSERT_NE(dialog, nullptr);
      step(*dialog);
    });
  }
  /// What the person answers to the question that is up, after what happens meanwhile.
  void ThenAnswer(QMessageBox::StandardButton button, std::function<void()> meanwhile = {}) {
    m_steps.emplace_back([this, button, meanwhile = std::move(meanwhile)](QWidget& widget) {
      auto* box = qobject_cast<QMessageBox*>(&widget);
      ASSERT_NE(box, nullptr);
      questions.append(box->text());
      if (meanwhile) meanwhile();
      QTest::mouseClick(box->button(button), Qt::LeftButton);
    });
  }
  static void Type(QFileDialog& dialog, const QString& name) {
    auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    ASSERT_NE(edit, nullptr);
    // A list of completions comes up whenever the folder has been read, and would take the key.
    edit->setCompleter(nullptr);
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(edit, name);
    QTest::keyClick(edit, Qt::Key_Return);
  }
  /// The files that the dialog lists, once it lists this one.
  static QStringList Listed(const QFileDialog& dialog, const QString& awaited) {
    auto* view = dialog.findChild<QListView*>(QStringLiteral("listView"));
    QStringList names;
    const auto list = [&] {
      names.clear();
      for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row) {
        names.append(view->model()->index(row, 0, view->rootIndex()).data().toString());
      }
      names.sort();
      return names.contains(awaited);
    };
    EXPECT_TRUE(WaitUntil(list)) << awaited.toStdString();
    return names;
  }

  QTemporaryDir folder;
  RecordedMessages messages;
  FileChooserDialog chooser{nullptr, messages};
  QStringList questions;

 private:
  void Answer() {
    QWidget* waiting = QApplication::activeModalWidget();
    if (waiting == nullptr || !waiting->isVisible() || waiting->property("answered").toBool()) return;
    if (m_steps.empty()) {
      ADD_FAILURE() << "nobody answers " << waiting->windowTitle().toStdString();
      waiting->close();
      return;
    }
    waiting->setProperty("answered", true);
    const auto step = m_steps.front();
    m_steps.pop_front();
    // Not from here: within its own call the timer would not see the next dialog.
    QTimer::singleShot(0, waiting, [step, waiting] { step(*waiting); });
  }

  std::deque<std::function<void(QWidget&)>> m_steps;
  QTemporaryDir m_widths;
  QTimer m_timer;
};

void Cancel(QFileDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); }

TEST_F(FileChooserDialogs, TheFiltersReadAsWrittenAndTheLastOneShowsEveryFile) {
  Put(QStringLiteral("a.qrn"));
  Put(QStringLiteral("b.txt"));
  Put(QStringLiteral("bare"));
  Then([](QFileDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("The title"));
    auto* filters = dialog.findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
    ASSERT_NE(filters, nullptr);
    ASSERT_EQ(filters->count(), 2);
    EXPECT_EQ(filters->itemText(0), QStringLiteral("QRN Files (*.qrn)"));
    EXPECT_EQ(filters->itemText(1), QStringLiteral("All Files (*.*)"));
    EXPECT_EQ(filters->currentIndex(), 0);
    EXPECT_EQ(Listed(dialog, QStringLiteral("a.qrn")), QStringList{QStringLiteral("a.qrn")});
    filters->setFocus();
    QTest::keyClick(filters, Qt::Key_Down);
    Q_EMIT filters->textActivated(filters->currentText());
    EXPECT_EQ(Listed(dialog, QStringLiteral("bare")),
              (QStringList{QStringLiteral("a.qrn"), QStringLiteral("b.txt"), QStringLiteral("bare")}));
    Cancel(dialog);
  });
  EXPECT_EQ(chooser.AskOpenFile(Question(folder.filePath(QStringLiteral("a.qrn")))), QString());
}

TEST_F(FileChooserDialogs, SizesTypesAndDatesAreNotCutShort) {
  // On a small screen the dialog has no room for them.
  std::optional<FontHeight> small;
  if (QGuiApplication::primaryScreen()->availableSize().width() < 1000) small.emplace(10);
  Put(QStringLiteral("a.qrn"), QByteArray(1000, 'x'));
  Then([](QFileDialog& dialog) {
    dialog.setViewMode(QFileDialog::Detail);
    Listed(dialog, QStringLiteral("a.qrn"));
    auto* view = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
    ASSERT_NE(view, nullptr);
    const QAbstractItemView& items = *view;
    for (int column = 1; column < view->header()->count(); ++column) {
      EXPECT_GE(view->columnWidth(column), items.sizeHintForColumn(column)) << column;
    }
    EXPECT_LE(view->header()->length(), view->viewport()->width());
    Cancel(dialog);
  });
  EXPECT_EQ(chooser.AskOpenFile(Question(folder.filePath(QStringLiteral("a.qrn")))), QString());
}

TEST_F(FileChooserDialogs, FitsASmallScreen) {
  const FontHeight large(28);
  Then([](QFileDialog& dialog) {
    const QSize screen = dialog.screen()->availableGeometry().size();
    EXPECT_LE(dialog.frameGeometry().width(), screen.width());
    EXPECT_LE(dialog.frameGeometry().height(), screen.height());
    dialog.reject();
  });
  EXPECT_EQ(chooser.AskOpenFile(Question()), QString());
}

TEST_F(FileChooserDialogs, OpenGivesANameWithoutSuffixItsOwn) {
  Put(QStringLiteral("bench.qrn"));
  Then([this](QFileDialog& dialog) { Type(dialog, folder.filePath(QStringLiteral("bench"))); });
  EXPECT_EQ(chooser.AskOpenFile(Question()), folder.filePath(QStringLiteral("bench.qrn")));
}

TEST_F(FileChooserDialogs, OpenTakesAFileWithoutSuffixThatIsPicked) {
  Put(QStringLiteral("bare"));
  Then([](QFileDialog& dialog) {
    dialog.selectNameFilter(QStringLiteral("All Files (*.*) (*)"));
    Listed(dialog, QStringLiteral("bare"));
    auto* view = dialog.findChild<QListView*>(QStringLiteral("listView"));
    const QModelIndex file = view->model()->index(0, 0, view->rootIndex());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(file).center());
    QTest::keyClick(view, Qt::Key_Return);
  });
  EXPECT_EQ(chooser.AskOpenFile(Question(folder.filePath(QStringLiteral("x.qrn")))),
            folder.filePath(QStringLiteral("bare")));
}

TEST_F(FileChooserDialogs, OpenLetsNoMissingFileThrough) {
  Then([this](QFileDialog& dialog) {
    ThenAnswer(QMessageBox::Ok);
    Type(dialog, folder.filePath(QStringLiteral("missing")));
    Cancel(dialog);
  });
  EXPECT_EQ(chooser.AskOpenFile(Question()), QString());
  ASSERT_EQ(questions.size(), 1);
  EXPECT_TRUE(questions[0].contains(QStringLiteral("File not found"))) << questions[0].toStdString();
}

TEST_F(FileChooserDialogs, SaveProposesTheInitialNameAndEnterTakesIt) {
  Then([](QFileDialog& dialog) {
    auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    EXPECT_EQ(edit->text(), QStringLiteral("Untitled.qrn"));
    QTest::keyClick(edit, Qt::Key_Return);
  });
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder.path()));
  const QString chosen = chooser.AskSaveFile(Question(QStringLiteral("Untitled.qrn")));
  QDir::setCurrent(before);
  EXPECT_EQ(QFileInfo(chosen).fileName(), QStringLiteral("Untitled.qrn"));
}

TEST_F(FileChooserDialogs, SaveProposesTheFileInForceInItsFolder) {
  Put(QStringLiteral("mine.qrn"));
  Then([this](QFileDialog& dialog) {
    EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(),
              QStringLiteral("mine.qrn"));
    EXPECT_EQ(dialog.directory().canonicalPath(), QDir(folder.path()).canonicalPath());
    Cancel(dialog);
  });
  EXPECT_EQ(chooser.AskSaveFile(Question(folder.filePath(QStringLiteral("mine.qrn")))), QString());
}

TEST_F(FileChooserDialogs, SaveReplacesAFileThatWasNamedFromTheWorkingFolder) {
  Put(QStringLiteral("mine.qrn"));
  QDir(folder.path()).mkdir(QStringLiteral("below"));
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder.filePath(QStringLiteral("below"))));
  FileQuestion question = Question(QStringLiteral("../mine.qrn"));
  question.folder = folder.path();
  Then([this](QFileDialog& dialog) {
    EXPECT_EQ(dialog.directory().canonicalPath(), QDir(folder.path()).canonicalPath());
    ThenAnswer(QMessageBox::Yes);
    QTest::keyClick(dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit")), Qt::Key_Return);
  });
  EXPECT_EQ(chooser.AskSaveFile(question), folder.filePath(QStringLiteral("mine.qrn")));
  QDir::setCurrent(before);
  EXPECT_EQ(questions.size(), 1);
}

TEST_F(FileChooserDialogs, OpenBeginsInTheQuestionsFolderElseWhereTheLastFileWasChosen) {
  Put(QStringLiteral("a.qrn"));
  const QTemporaryDir other;
  const auto expectFolder = [&](const QString& expected) {
    Then([expected](QFileDialog& dialog) {
      EXPECT_EQ(dialog.directory().canonicalPath(), QDir(expected).canonicalPath());
      Cancel(dialog);
    });
  };
  FileQuestion inOther = Question();
  inOther.folder = other.path();
  expectFolder(QDir::currentPath());
  EXPECT_EQ(chooser.AskOpenFile(Question()), QString());
  expectFolder(other.path());
  EXPECT_EQ(chooser.AskOpenFile(inOther), QString());
  Then([this](QFileDialog& dialog) { Type(dialog, folder.filePath(QStringLiteral("a.qrn"))); });
  EXPECT_EQ(chooser.AskOpenFile(Question()), folder.filePath(QStringLiteral("a.qrn")));
  expectFolder(folder.path());
  EXPECT_EQ(chooser.AskSaveFile(Question()), QString());
  expectFolder(other.path());
  EXPECT_EQ(chooser.AskSaveFile(inOther), QString());
}

TEST_F(FileChooserDialogs, AProgramThatStandsInItsOwnFolderBeginsInTheDocuments) {
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(QCoreApplication::applicationDirPath()));
  Then([](QFileDialog& dialog) {
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QDir expected(QFileInfo(documents).isDir() ? documents : QDir::homePath());
    EXPECT_EQ(dialog.directory().canonicalPath(), expected.canonicalPath());
    EXPECT_NE(dialog.directory(), QDir::current());
    Cancel(dialog);
  });
  EXPECT_EQ(chooser.AskOpenFile(Question()), QString());
  QDir::setCurrent(before);
}

TEST_F(FileChooserDialogs, SaveGivesANameWithoutSuffixItsOwn) {
  Then([this](QFileDialog& dialog) { Type(dialog, folder.filePath(QStringLiteral("new"))); });
  EXPECT_EQ(chooser.AskSaveFile(Question()), folder.filePath(QStringLiteral("new.qrn")));
  Then([this](QFileDialog& dialog) { Type(dialog, folder.filePath(QStringLiteral("new.txt"))); });
  EXPECT_EQ(chooser.AskSaveFile(Question()), folder.filePath(QStringLiteral("new.txt")));
}

TEST_F(FileChooserDialogs, SaveAsksBeforeItLetsAFileBeOverwritten) {
  Put(QStringLiteral("old.qrn"));
  Then([this](QFileDialog& dialog) {
    ThenAnswer(QMessageBox::No);
    Type(dialog, folder.filePath(QStringLiteral("old")));
    EXPECT_TRUE(dialog.isVisible());
    ThenAnswer(QMessageBox::Yes);
    Type(dialog, folder.filePath(QStringLiteral("old")));
  });
  EXPECT_EQ(chooser.AskSaveFile(Question()), folder.filePath(QStringLiteral("old.qrn")));
  ASSERT_EQ(questions.size(), 2);
  EXPECT_TRUE(questions[0].contains(QStringLiteral("already exists"))) << questions[0].toStdString();
}

/// A folder that is read late may select one of its entries, whose name comes into the field.
TEST_F(FileChooserDialogs, SaveOverwritesTheFileThatTheQuestionNamed) {
  Put(QStringLiteral("old.qrn"));
  Put(QStringLiteral("other.qrn"));
  FileQuestion question = Question();
  question.folder = folder.path();
  Then([this](QFileDialog& dialog) {
    Listed(dialog, QStringLiteral("other.qrn"));
    ThenAnswer(QMessageBox::Yes, [&dialog] {
      const auto* view = dialog.findChild<QListView*>(QStringLiteral("listView"));
      for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row) {
        const QModelIndex entry = view->model()->index(row, 0, view->rootIndex());
        if (entry.data().toString() != u"other.qrn") continue;
        view->selectionModel()->select(entry,
                                       QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
      }
      EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(),
                QStringLiteral("other.qrn"));
    });
    Type(dialog, QStringLiteral("old"));
  });
  EXPECT_EQ(chooser.AskSaveFile(question), folder.filePath(QStringLiteral("old.qrn")));
  EXPECT_EQ(questions.size(), 1);
}

/// A system's dialog that takes these names, one after the other.
class SystemDialog {
 public:
  explicit SystemDialog(QStringList names) : m_names(std::move(names)) {}
  QString operator()(const FileQuestion& question) {
    asked.append(question);
    return m_names.isEmpty() ? QString() : m_names.takeFirst();
  }
  QList<FileQuestion> asked;

 private:
  QStringList m_names;
};

TEST_F(FileChooserDialogs, AFileWhoseSuffixTheSystemDoesNotKnowIsAskedAboutHere) {
  Put(QStringLiteral("old.qrn"));
  const QString old = folder.filePath(QStringLiteral("old"));
  messages.answers = {true};
  SystemDialog dialog({old});
  EXPECT_EQ(AskSaveFileAndAddSuffix(Question(), std::ref(dialog), messages), old + QStringLiteral(".qrn"));
  EXPECT_EQ(messages.shown,
            QStringList{"yes or no/: Confirmation//\"old.qrn\" already exists./Do you want to replace it?"});
  EXPECT_EQ(messages.defaults, std::vector{AnswerByDefault::Refuse});
  ASSERT_EQ(dialog.asked.size(), 1);
  EXPECT_EQ(dialog.asked[0].suffix, QString()) << "Qt would add it after the system has asked";
}

TEST_F(FileChooserDialogs, AfterANoTheSystemsDialogComesAgainWithTheName) {
  Put(QStringLiteral("old.qrn"));
  const QString fresh = folder.filePath(QStringLiteral("new"));
  messages.answers = {false};
  SystemDialog dialog({folder.filePath(QStringLiteral("old")), fresh});
  EXPECT_EQ(AskSaveFileAndAddSuffix(Question(), std::ref(dialog), messages), fresh + QStringLiteral(".qrn"));
  EXPECT_EQ(messages.shown.size(), 1);
  ASSERT_EQ(dialog.asked.size(), 2);
  EXPECT_EQ(dialog.asked[1].initialName, folder.filePath(QStringLiteral("old.qrn")));
  EXPECT_EQ(dialog.asked[1].folder, folder.path());
}

TEST_F(FileChooserDialogs, AWholeNameAndACancelAreTakenFromTheSystemAsTheyAre) {
  Put(QStringLiteral("old.qrn"));
  const QString old = folder.filePath(QStringLiteral("old.qrn"));
  SystemDialog whole({old});
  EXPECT_EQ(AskSaveFileAndAddSuffix(Question(), std::ref(whole), messages), old);
  SystemDialog cancelled({});
  EXPECT_EQ(AskSaveFileAndAddSuffix(Question(), std::ref(cancelled), messages), QString());
  EXPECT_EQ(messages.shown, QStringList());
}

}  // namespace
}  // namespace quarn::test
