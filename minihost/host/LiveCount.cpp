#include "minihost/host/LiveCount.h"

#include <atomic>

namespace minihost {

namespace {

std::atomic<long> gLiveTokens{0};

}  // namespace

LiveToken::LiveToken() noexcept { gLiveTokens.fetch_add(1); }

LiveToken::~LiveToken() { gLiveTokens.fetch_sub(1); }

long LiveToken::Count() noexcept { return gLiveTokens.load(); }

}  // namespace minihost
