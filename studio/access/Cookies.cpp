#include "studio/access/Cookies.h"

#include <algorithm>

namespace multiscene::studio {

std::string cookieOf(const platform::http::RequestHead& head, const std::string& name) {
    const std::string all = head.header("Cookie"), start = name + "=";
    for (size_t at = 0; at < all.size();) {
        const size_t end = std::min({all.find(';', at), all.find(',', at), all.size()});
        while (at < end && all[at] == ' ') ++at;
        if (all.compare(at, start.size(), start) == 0 && end >= at + start.size())
            return all.substr(at + start.size(), end - at - start.size());
        at = end + 1;
    }
    return {};
}

}  // namespace multiscene::studio
