#include "serial/connected_mark.h"

#include <gtest/gtest.h>

#include <utility>

namespace quarn {
namespace {

TEST(ConnectedMark, FollowsWhatHasBecomeOfThePort) {
  for (const auto& [change, connected] : {
           std::pair{PortChange::Opened, true},
           {PortChange::FormerChosen, true},
           {PortChange::NotOpened, false},
           {PortChange::Closed, false},
           {PortChange::Lost, false},
           {PortChange::Undefined, false},
       }) {
    for (const PortChange before : {PortChange::Opened, PortChange::Closed}) {
      ConnectedMark mark;
      mark.Update(before);
      mark.Update(change);
      EXPECT_EQ(mark.IsSet(), connected) << static_cast<int>(change);
    }
  }
}

TEST(ConnectedMark, IsNotSetAtFirst) { EXPECT_FALSE(ConnectedMark().IsSet()); }

TEST(ConnectedMark, AnOpeningIsAsGoodAsItsSuccess) {
  EXPECT_EQ(OpeningThat(true), PortChange::Opened);
  EXPECT_EQ(OpeningThat(false), PortChange::NotOpened);
}

}  // namespace
}  // namespace quarn
