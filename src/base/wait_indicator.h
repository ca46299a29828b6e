#pragma once

namespace quarn {

/// Shows that the program is busy (the hourglass cursor). Over a box it waits for the person, so boxes show
/// the usual cursor. Plain, so that every layer may use it.
class WaitIndicator {
 public:
  virtual ~WaitIndicator() = default;
  virtual void Show() = 0;
  virtual void Restore() = 0;
};

/// Shows the indicator while the object exists.
class WaitShown {
 public:
  explicit WaitShown(WaitIndicator& indicator) : m_indicator(indicator) { m_indicator.Show(); }
  ~WaitShown() { m_indicator.Restore(); }
  WaitShown(const WaitShown&) = delete;
  WaitShown& operator=(const WaitShown&) = delete;

 private:
  WaitIndicator& m_indicator;
};

}  // namespace quarn
