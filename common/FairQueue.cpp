#include "common/FairQueue.h"

#include <algorithm>
#include <utility>

namespace pimav::detail {

namespace {

// Clients remembered beyond the waiting ones before the settled ones are forgotten.
constexpr size_t kRememberedClients = 256;

double seconds(FairQueue::Clock::duration d) {
    return std::chrono::duration<double>(d).count();
}

}  // namespace

FairQueue::Admission FairQueue::push(PendingRequest&& request, Clock::time_point now) {
    if (m_bytes + request.bytes > m_max_bytes) {
        return Admission::QueueFull;
    }
    auto it = m_clients.try_emplace(request.peer).first;
    Client& client = it->second;
    if (client.waiting.size() >= m_max_per_client) {
        return Admission::ClientFull;
    }
    if (client.waiting.empty()) {
        m_ready.push_back(it);
    }
    m_bytes += request.bytes;
    client.lastArrival = now;
    client.arrivals.push_back(m_arrivals++);
    client.waiting.push_back(std::move(request));
    return Admission::Queued;
}

std::optional<FairQueue::Clock::time_point> FairQueue::waitForOthers(const Client& next, double start,
                                                                    Clock::time_point now) const {
    const double ahead = start - m_virtual;
    if (ahead <= seconds(kSlack)) {
        return std::nullopt;
    }
    std::optional<Clock::time_point> retryAt;
    for (const auto& entry : m_clients) {
        const Client& other = entry.second;
        if (&other != &next && other.finish < start && now - other.lastArrival < kActiveWindow) {
            retryAt = std::min(retryAt.value_or(Clock::time_point::max()), other.lastArrival + kActiveWindow);
        }
    }
    if (retryAt) {
        // Waiting with nothing to do lets the virtual time run: the turn comes by then.
        const auto turn = now + std::chrono::duration_cast<Clock::duration>(
                                    std::chrono::duration<double>(ahead - seconds(kSlack)));
        retryAt = std::min(*retryAt, turn);
    }
    return retryAt;
}

std::optional<PendingRequest> FairQueue::take(Clock::time_point now, Clock::time_point& retryAt) {
    if (m_waiting_since) {
        m_virtual += seconds(now - *m_waiting_since);
        m_waiting_since.reset();
    }
    auto next = m_ready.begin();
    double nextStart = 0;
    for (auto it = m_ready.begin(); it != m_ready.end(); ++it) {
        const Client& client = (*it)->second;
        const double start = std::max(m_virtual, client.finish);
        if (it == m_ready.begin() || start < nextStart ||
            (start == nextStart && client.arrivals.front() < (*next)->second.arrivals.front())) {
            next = it;
            nextStart = start;
        }
    }
    Client& client = (*next)->second;
    if (const auto wait = waitForOthers(client, nextStart, now)) {
        m_waiting_since = now;
        retryAt = *wait;
        return std::nullopt;
    }
    m_virtual = nextStart;
    client.start = nextStart;
    client.finish = nextStart;  // until charged
    PendingRequest request = std::move(client.waiting.front());
    client.waiting.pop_front();
    client.arrivals.pop_front();
    m_bytes -= request.bytes;
    if (client.waiting.empty()) {
        *next = m_ready.back();
        m_ready.pop_back();
    }
    return request;
}

void FairQueue::charge(const std::string& peer, Clock::duration used) {
    auto it = m_clients.find(peer);
    if (it == m_clients.end()) {
        return;
    }
    it->second.finish = it->second.start + seconds(used);
    if (m_clients.size() > m_ready.size() + kRememberedClients) {
        forgetSettledClients();
    }
}

void FairQueue::forgetSettledClients() {
    const auto now = Clock::now();
    for (auto it = m_clients.begin(); it != m_clients.end();) {
        const Client& client = it->second;
        if (client.waiting.empty() && client.finish <= m_virtual && now - client.lastArrival >= kActiveWindow) {
            it = m_clients.erase(it);
        } else {
            ++it;
        }
    }
}

}  // namespace pimav::detail
