#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <iostream>
#include <set>
#include <string>

#include "settings/working_file.h"
#include "support/recorded_messages.h"
#include "system/faults/call_faults.h"
#include "system/faults/disk_journal.h"

namespace quarn::test {

/// Runs operations on the settings files of a folder, and checks every disk that a power loss can leave of
/// each: every file is whole, with a content that it had at some moment, or missing where it was missing.
class PowerLosses {
 public:
  explicit PowerLosses(const QString& folder)
      : m_folder(QFile::encodeName(QDir(folder).path()).toStdString()) {}

  /// Runs `act` once. `check` gets each disk. Returns how many different ones there were.
  template <class Act, class Check>
  int Play(const char* name, const Act& act, const Check& check, const FaultPlan& plan = {}) {
    DiskJournal journal(m_folder);
    {
      CallFaults calls(m_folder, plan);
      calls.NoteIn(journal);
      act();
    }
    int different = 0;
    const int states = journal.ForEachState([&](const DiskState& state) {
      ++different;
      Count(state);
      if (testing::Test::HasFailure()) return;
      ExpectWhole(journal, state);
      check(state);
    });
    std::cout << "power loss: " << name << ": " << states << " states, " << different << " different\n";
    EXPECT_GT(different, 1) << name << " does nothing that a power loss could spoil";
    return different;
  }
  /// With a file that loads before and after: the next start takes each disk without a word.
  template <class Act>
  int PlaySound(const char* name, const Act& act, const FaultPlan& plan = {}) {
    const auto check = [this](const DiskState& state) {
      const SettingsRecord loaded = Start(state);
      EXPECT_EQ(m_messages.shown, QStringList());
      EXPECT_EQ(loaded.loadedMarker, QStringLiteral("TRUE"));
    };
    return Play(name, act, check, plan);
  }

  /// A start of the program with this disk.
  SettingsRecord Start(const DiskState& state) {
    const QTemporaryDir folder;
    for (const auto& [name, content] : state) {
      QFile file(folder.filePath(QString::fromStdString(name)));
      EXPECT_TRUE(file.open(QIODevice::WriteOnly));
      EXPECT_EQ(file.write(content.data(), static_cast<qint64>(content.size())),
                static_cast<qint64>(content.size()));
    }
    SettingsRecord record;
    m_messages.shown.clear();
    LoadInitialSettings(folder.filePath(QStringLiteral("Quarn.ini")), record, m_messages);
    return record;
  }
  /// What that start showed.
  [[nodiscard]] const QStringList& Shown() const { return m_messages.shown; }

  /// How many different disks all operations left; and how many if temporary files, which nothing reads, are
  /// not counted.
  [[nodiscard]] std::size_t Disks() const { return m_disks.size(); }
  [[nodiscard]] std::size_t DisksWithoutTemporaryFiles() const { return m_readDisks.size(); }

 private:
  void Count(DiskState state) {
    m_disks.insert(state);
    std::erase_if(state, [](const auto& file) { return IsTemporaryName(file.first); });
    m_readDisks.insert(std::move(state));
  }
  static void ExpectWhole(const DiskJournal& journal, const DiskState& state) {
    for (const std::string& name : journal.LastingNames()) {
      const auto found = state.find(name);
      if (found == state.end()) {
        EXPECT_TRUE(journal.WasAbsent(name)) << name << " is gone";
      } else {
        EXPECT_TRUE(journal.Versions(name).contains(found->second))
            << name << " has " << found->second.size() << " bytes: " << found->second;
      }
    }
  }

  const std::string m_folder;  ///< without a separator at its end: temporary files are opened by it
  RecordedMessages m_messages;
  std::set<DiskState> m_disks;
  std::set<DiskState> m_readDisks;
};

}  // namespace quarn::test
