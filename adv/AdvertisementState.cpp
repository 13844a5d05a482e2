#include "pimAvMngApi/adv/AdvertisementState.h"

#include "platform/WordTable.h"

namespace {

// Any word other than "Stale" reads as OK.
constexpr pimav::detail::WordRow<int32_t> kStateWords[] = {{AdvertisementState::OK, "OK"},
                                                           {AdvertisementState::STALE, "Stale"}};

}  // namespace

PIMAV_WORD_TYPE_MEMBERS(AdvertisementState, m_state, kStateWords, "Undefined", OK, "status", "")
