#pragma once

#include <QString>
#include <array>

#include "base/text_lines.h"
#include "settings/settings_record.h"

namespace quarn {

/// With its key a stored command is one line of a settings file; what is typed into it ends there.
inline constexpr int kMaxStoredCommand =
    static_cast<int>(kMaxLineCharacters - qsizetype{sizeof("MEM0=") - 1});

/// What of a text can stand in a stored command: a value is one line of a settings file. Line breaks, other
/// control characters but the tab, and halves of characters are left out.
[[nodiscard]] QString AsStoredCommand(const QString& text);

/// The ten stored commands being edited. Edits reach the live settings when edit mode is left, and the
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

  /// `settings` outlives the table.
  explicit FunctionKeyTable(SettingsRecord& settings);

  /// What the ten fields show, MEM0 first.
  [[nodiscard]] const Texts& EditText() const { return m_editText; }
  /// The person changed a field.
  void SetEditText(int index, const QString& text);
  /// Characters that the field takes: more than kMaxStoredCommand where a longer text came from a file.
  [[nodiscard]] int Limit(int index) const;
  [[nodiscard]] bool IsEditing() const { return m_editing; }
  [[nodiscard]] Enabled WhatIsEnabled() const;

  void StartEditing();
  /// The fields become the live settings.
  void FinishEditing();
  /// Whether the settings, or in edit mode the fields, differ from what was last loaded or saved.
  [[nodiscard]] bool CanUndo() const;
  /// Fields and live settings go back to what was last loaded or saved.
  void Undo();
  /// Whether the settings differ from what was last loaded or saved.
  [[nodiscard]] bool CanSave() const;
  /// Writes the ten fields into the working settings file, with one replacement. False when they would not
  /// fit into it; then nothing is written and they stay unsaved.
  bool Save(const QString& settingsFile);
  /// The settings were replaced: the fields show them, in edit mode too.
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
