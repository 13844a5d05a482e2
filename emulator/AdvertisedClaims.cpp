#include "AdvertisedClaims.h"

#include <algorithm>
#include <iterator>

namespace pimav::detail {

bool AdvertisedClaims::claim(uint64_t id, AdvertisedClaim claim) {
    Claims& claims = m_claims[id];
    auto& queue = claims.queue;
    auto same = std::find_if(queue.begin(), queue.end(),
                             [&](const AdvertisedClaim& c) { return c.source.key == claim.source.key; });
    if (same != queue.end()) {
        *same = std::move(claim);
    } else {
        m_waiting += queue.empty() ? 0 : 1;
        queue.push_back(std::move(claim));
        same = std::prev(queue.end());
    }
    const bool holder = same == queue.begin();
    if (holder) {
        claims.last = queue.front().source;
    }
    return holder;
}

bool AdvertisedClaims::holds(uint64_t id, const std::string& key) const {
    const auto it = m_claims.find(id);
    return it != m_claims.end() && !it->second.queue.empty() && it->second.queue.front().source.key == key;
}

std::optional<AdvertisedClaim> AdvertisedClaims::release(uint64_t id, const std::string& key) {
    const auto it = m_claims.find(id);
    if (it == m_claims.end()) {
        return std::nullopt;
    }
    auto& queue = it->second.queue;
    const auto found = std::find_if(queue.begin(), queue.end(),
                                    [&](const AdvertisedClaim& c) { return c.source.key == key; });
    if (found == queue.end()) {
        return std::nullopt;
    }
    const bool holder = found == queue.begin();
    queue.erase(found);
    if (queue.empty()) {
        return std::nullopt;
    }
    --m_waiting;
    if (!holder) {
        return std::nullopt;
    }
    it->second.last = queue.front().source;
    return queue.front();
}

void AdvertisedClaims::clear(uint64_t id) {
    const auto it = m_claims.find(id);
    if (it != m_claims.end() && !it->second.queue.empty()) {
        m_waiting -= it->second.queue.size() - 1;
        it->second.queue.clear();
    }
}

void AdvertisedClaims::forget(uint64_t id) {
    const auto it = m_claims.find(id);
    if (it != m_claims.end() && it->second.queue.empty()) {
        m_claims.erase(it);
    }
}

const AdvertisedSource* AdvertisedClaims::source(uint64_t id) const {
    const auto it = m_claims.find(id);
    if (it == m_claims.end()) {
        return nullptr;
    }
    return it->second.queue.empty() ? &it->second.last : &it->second.queue.front().source;
}

}  // namespace pimav::detail
