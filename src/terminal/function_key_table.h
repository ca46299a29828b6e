#pragma once

#include <QString>
#include <array>

#include "base/text_lines.h"
#include "settings/settings_record.h"

namespace quarn {

/// With its key a stored command is one line of a settings file; input ends at this length.
inline constexpr int kMaxStoredCommand =
    static_cast<int>(kMaxLineCharacters - qsizetype{sizeof("MEM0=") - 1});

/// The part of a text that can be a stored command, which is one line of a settings file. Line breaks,
/// control characters other than tab, and half surrogate pairs are removed.
[[nodiscard]] QString AsStoredCommand(const QString& text);

/// The ten stored commands being edited. Changes reach the current settings when edit mode ends, and the
/// working settings file only when they are saved.
class FunctionKeyTable {
 public:
  using Texts = std::array<QString, kStoredCommandCount>;

  struct Enabled {
    bool fields = false;
    bool functionKeys = true;
    bool undo = false;
    bool save = false;
    bool ok = true;
    bool send = true;
    bool operator==(const Enabled&) const = default;
  };

  /// `settings` must outlive the table.
  explicit FunctionKeyTable(SettingsRecord& settings);

  /// What the ten fields show, MEM0 first.
  [[nodiscard]] const Texts& EditText() const { return m_editText; }
  /// The user changed a field.
  void SetEditText(int index, const QString& text);
  /// The maximum length of the field: more than kMaxStoredCommand if a longer text came from a file.
  [[nodiscard]] int Limit(int index) const;
  [[nodiscard]] bool IsEditing() const { return m_editing; }
  [[nodiscard]] Enabled WhatIsEnabled() const;

  void StartEditing();
  /// Copies the fields to the current settings.
  void FinishEditing();
  /// Whether the settings, or in edit mode the fields, differ from what was last loaded or saved.
  [[nodiscard]] bool CanUndo() const;
  /// Resets fields and current settings to what was last loaded or saved.
  void Undo();
  /// Whether the settings differ from what was last loaded or saved.
  [[nodiscard]] bool CanSave() const;
  /// Writes the ten fields into the working settings file, replacing it once. If they do not fit into it,
  /// returns false, writes nothing, and they stay unsaved.
  bool Save(const QString& settingsFile);
  /// The settings were replaced: shows them in the fields, in edit mode too.
  void Reload();

 private:
  SettingsRecord& m_settings;
  Texts m_editText;
  Texts m_savedText;   ///< as last loaded or saved
  Texts m_loadedText;  ///< what the fields held before anything was typed
  bool m_editing = false;
  bool m_undo = false;
  bool m_save = false;
};

}  // namespace quarn
