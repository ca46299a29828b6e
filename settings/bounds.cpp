#include "settings/bounds.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace quarn {

namespace {
std::atomic<BoundsErrorHandler> g_handler{nullptr};
}

void FatalBoundsError(const char* limitName, qsizetype limit, qsizetype length) {
  if (const BoundsErrorHandler handler = g_handler.load()) handler(limitName);
  std::fprintf(stderr, "quarn: bounds error: %s of %lld characters, at most %lld fit\n", limitName,
               static_cast<long long>(length), static_cast<long long>(limit));
  std::fflush(stderr);
  std::abort();
}

BoundsErrorHandler SetBoundsErrorHandler(BoundsErrorHandler handler) { return g_handler.exchange(handler); }

}  // namespace quarn
