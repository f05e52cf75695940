#include "studio/jobs/JobOrder.h"

#include <algorithm>
#include <deque>
#include <tuple>

namespace multiscene::studio {

std::vector<WaitingJob> inOrder(std::vector<WaitingJob> jobs, std::map<std::string, int64_t> turns) {
    std::stable_sort(jobs.begin(), jobs.end(), [](const WaitingJob& one, const WaitingJob& other) {
        return std::tuple(!one.isUrgent, one.created) < std::tuple(!other.isUrgent, other.created);
    });
    int64_t now = 0;
    for (const auto& [session, turn] : turns) now = std::max(now, turn);
    std::map<std::string, std::deque<WaitingJob>> waiting;
    for (WaitingJob& job : jobs) waiting[job.session].push_back(std::move(job));

    std::vector<WaitingJob> order;
    while (!waiting.empty()) {
        const auto rank = [&](const auto& session) {
            const WaitingJob& first = session.second.front();
            return std::tuple(!first.isUrgent, turns[session.first], first.created);
        };
        const auto next =
            std::min_element(waiting.begin(), waiting.end(),
                             [&](const auto& one, const auto& other) { return rank(one) < rank(other); });
        turns[next->first] = ++now;
        order.push_back(std::move(next->second.front()));
        next->second.pop_front();
        if (next->second.empty()) waiting.erase(next);
    }
    return order;
}

}  // namespace multiscene::studio
