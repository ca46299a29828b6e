#include "terminal/function_key_table.h"

#include <algorithm>

#include "settings/settings_load_save.h"
#include "settings/settings_table.h"

namespace quarn {
namespace {

bool MayStand(char32_t character) {
  if (character == U'\t') return true;
  switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
      return false;
    default:
      return true;
  }
}

}  // namespace

QString AsStoredCommand(const QString& text) {
  QString kept;
  kept.reserve(text.size());
  for (qsizetype i = 0; i < text.size(); ++i) {
    const bool pair = text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
    const qsizetype length = pair ? 2 : 1;
    const char32_t character =
        pair ? QChar::surrogateToUcs4(text.at(i), text.at(i + 1)) : char32_t{text.at(i).unicode()};
    if (MayStand(character)) kept.append(QStringView(text).sliced(i, length));
    i += length - 1;
  }
  return kept;
}

FunctionKeyTable::FunctionKeyTable(SettingsRecord& settings)
    : m_settings(settings), m_editText(settings.mem), m_savedText(settings.mem), m_loadedText(settings.mem) {}

void FunctionKeyTable::SetEditText(int index, const QString& text) {
  m_editText.at(static_cast<std::size_t>(index)) = AsStoredCommand(text);
}

int FunctionKeyTable::Limit(int index) const {
  const auto i = static_cast<std::size_t>(index);
  const qsizetype longest =
      std::max({m_editText.at(i).size(), m_loadedText.at(i).size(), m_savedText.at(i).size()});
  return std::max(kMaxStoredCommand, static_cast<int>(longest));
}

FunctionKeyTable::Enabled FunctionKeyTable::WhatIsEnabled() const {
  return {.fields = m_editing,
          .functionKeys = !m_editing,
          .undo = m_undo && (m_editing || CanUndo()),
          .save = m_save && CanSave(),
          .ok = !m_editing,
          .send = !m_editing};
}

void FunctionKeyTable::StartEditing() {
  m_editing = true;
  m_loadedText = m_editText;
  m_undo = true;
  m_save = false;
}

void FunctionKeyTable::FinishEditing() {
  m_editing = false;
  m_undo = m_save = m_editText != m_savedText;
  m_settings.mem = m_editText;
  m_loadedText = m_editText;
}

bool FunctionKeyTable::CanUndo() const {
  return m_settings.mem != m_savedText || (m_editing && m_editText != m_savedText);
}

void FunctionKeyTable::Undo() {
  m_editText = m_savedText;
  m_loadedText = m_savedText;
  m_settings.mem = m_savedText;
  m_undo = false;
}

bool FunctionKeyTable::CanSave() const { return m_settings.mem != m_savedText; }

bool FunctionKeyTable::Save(const QString& settingsFile) {
  QList<NewValue> values;
  for (std::size_t i = 0; i < m_editText.size(); ++i) values.append({keys::kMem[i], m_editText[i]});
  if (!UpdateIfFits(settingsFile, values)) return false;
  m_savedText = m_editText;
  return true;
}

void FunctionKeyTable::Reload() {
  m_editText = m_settings.mem;
  m_savedText = m_settings.mem;
  m_loadedText = m_settings.mem;
  m_undo = m_editing;
  m_save = false;
}

}  // namespace quarn
