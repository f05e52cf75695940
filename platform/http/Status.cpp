#include "platform/http/Status.h"

#include <algorithm>
#include <array>

namespace platform::http {

namespace {

struct Row {
    int status;
    std::string_view text;
};

constexpr std::array rows = {
    Row{200, "OK"},
    Row{201, "Created"},
    Row{202, "Accepted"},
    Row{204, "No Content"},
    Row{206, "Partial Content"},
    Row{301, "Moved Permanently"},
    Row{302, "Found"},
    Row{303, "See Other"},
    Row{304, "Not Modified"},
    Row{307, "Temporary Redirect"},
    Row{308, "Permanent Redirect"},
    Row{400, "Bad Request"},
    Row{401, "Unauthorized"},
    Row{403, "Forbidden"},
    Row{404, "Not Found"},
    Row{405, "Method Not Allowed"},
    Row{408, "Request Timeout"},
    Row{409, "Conflict"},
    Row{410, "Gone"},
    Row{411, "Length Required"},
    Row{412, "Precondition Failed"},
    Row{413, "Content Too Large"},
    Row{414, "URI Too Long"},
    Row{415, "Unsupported Media Type"},
    Row{416, "Range Not Satisfiable"},
    Row{417, "Expectation Failed"},
    Row{422, "Unprocessable Content"},
    Row{429, "Too Many Requests"},
    Row{431, "Request Header Fields Too Large"},
    Row{500, "Internal Server Error"},
    Row{501, "Not Implemented"},
    Row{503, "Service Unavailable"},
    Row{505, "HTTP Version Not Supported"},
    Row{507, "Insufficient Storage"},
};

}  // namespace

std::string_view statusText(int status) {
    const auto found = std::find_if(rows.begin(), rows.end(), [&](Row row) { return row.status == status; });
    if (found != rows.end()) return found->text;
    return status < 300 ? "Success" : status < 400 ? "Redirection" : status < 500 ? "Error" : "Server Error";
}

}  // namespace platform::http
