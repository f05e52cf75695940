// What the HTTP server costs: small answers a second, and the memory and patience of a server that has 200
// event streams and 500 clients that never ask. The server runs in a process of its own.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/base/Clock.h"
#include "platform/http/Server.h"

namespace {

using namespace platform::http;

constexpr size_t streams = 200, silent = 500, asking = 32;

class Site : public Handler {
  public:
    Expectation expect(const RequestHead&) override { return NoBody{}; }
    void handle(Request request, Responder responder) override {
        if (request.head.path[0] == "ping") return responder.answer(Answer::text(200, "pong"));
        const std::lock_guard lock(mutex_);
        streams_.push_back(responder.stream());
    }
    void tellAll() {
        const std::lock_guard lock(mutex_);
        for (const EventStream& each : streams_) each.send({std::string(300, 'x'), "job", "1"});
    }

  private:
    std::mutex mutex_;
    std::vector<EventStream> streams_;
};

[[noreturn]] void serve(int tell) {
    Site site;
    ServerOptions options;
    options.limits.connections = options.limits.connectionsPerAddress = streams + silent + asking + 10;
    options.limits.headTime = std::chrono::minutes(5);
    const Server server(options, site);
    const uint16_t port = server.port();
    if (::write(tell, &port, sizeof port) != sizeof port) std::exit(1);
    for (;;) {
        site.tellAll();
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
}

int connected(uint16_t port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (socket < 0 || ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        std::perror("http-server: no connection");
        std::exit(1);
    }
    return socket;
}

void say(int socket, const std::string& bytes) {
    if (::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()))
        std::exit(1);
}

std::string request(const std::string& path, uint16_t port) {
    return "GET " + path + " HTTP/1.1\r\nHost: localhost:" + std::to_string(port) + "\r\n\r\n";
}

/// Answers of one small packet each come whole.
double answersEachSecond(uint16_t port, double seconds) {
    std::vector<pollfd> sockets;
    const std::string ping = request("/ping", port);
    for (size_t i = 0; i < asking; ++i) {
        sockets.push_back({connected(port), POLLIN, 0});
        say(sockets.back().fd, ping);
    }
    const double start = platform::monotonicSeconds();
    size_t count = 0;
    char answer[4096];
    while (platform::monotonicSeconds() < start + seconds) {
        ::poll(sockets.data(), sockets.size(), 1000);
        for (const pollfd& each : sockets) {
            if (!(each.revents & POLLIN)) continue;
            if (::recv(each.fd, answer, sizeof answer, 0) <= 0) std::exit(1);
            ++count;
            say(each.fd, ping);
        }
    }
    const double rate = static_cast<double>(count) / (platform::monotonicSeconds() - start);
    for (const pollfd& each : sockets) ::close(each.fd);
    return rate;
}

std::vector<double> pingMilliseconds(uint16_t port, int count) {
    std::vector<double> times;
    char answer[4096];
    for (int i = 0; i < count; ++i) {
        const double start = platform::monotonicSeconds();
        const int socket = connected(port);
        say(socket, request("/ping", port));
        if (::recv(socket, answer, sizeof answer, 0) <= 0) std::exit(1);
        ::close(socket);
        times.push_back((platform::monotonicSeconds() - start) * 1000);
    }
    std::sort(times.begin(), times.end());
    return times;
}

double statusMegabytes(pid_t process, const std::string& key) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key)) return std::atof(line.c_str() + key.size()) / 1024;
    return 0;
}

double cpuSeconds(pid_t process) {
    std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), {});
    long user = 0, system = 0;
    std::sscanf(text.c_str() + text.rfind(')'), ") %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld",
                &user, &system);
    return static_cast<double>(user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

void printMemory(pid_t server, const char* when) {
    std::printf("memory %s: %.1f MB, %.1f of them its own\n", when, statusMegabytes(server, "VmRSS:"),
                statusMegabytes(server, "RssAnon:"));
}

}  // namespace

int main() {
    rlimit files{};
    ::getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &files);
    int ends[2];
    if (::pipe(ends) != 0) return 1;
    const pid_t server = ::fork();
    if (server == 0) serve(ends[1]);
    uint16_t port = 0;
    if (::read(ends[0], &port, sizeof port) != sizeof port) return 1;

    printMemory(server, "at the start");
    const double cpuBefore = cpuSeconds(server);
    const double rate = answersEachSecond(port, 5);
    std::printf("%.0f answers a second on %zu connections, %.1f us of CPU each\n", rate, asking,
                (cpuSeconds(server) - cpuBefore) / (rate * 5) * 1e6);

    std::vector<int> open;
    for (size_t i = 0; i < streams; ++i) say(open.emplace_back(connected(port)), request("/events", port));
    const std::vector<int> hearing = open;
    std::thread([hearing] {
        char events[65536];
        std::vector<pollfd> all;
        for (const int socket : hearing) all.push_back({socket, POLLIN, 0});
        for (;;) {
            ::poll(all.data(), all.size(), 1000);
            for (const pollfd& each : all)
                if (each.revents & POLLIN) (void)!::recv(each.fd, events, sizeof events, MSG_DONTWAIT);
        }
    }).detach();
    for (size_t i = 0; i < silent; ++i) say(open.emplace_back(connected(port)), "GET /");
    const auto times = pingMilliseconds(port, 1000);
    const double cpuThen = cpuSeconds(server);
    const double start = platform::monotonicSeconds();
    platform::sleepSeconds(5);
    std::printf(
        "beside %zu streams of 5 events a second and %zu silent clients: a new connection's answer after "
        "%.2f ms "
        "(median), %.2f (99 of 100), %.2f (longest)\n",
        streams, silent, times[500], times[990], times.back());
    std::printf("CPU for the streams: %.3f s a second\n",
                (cpuSeconds(server) - cpuThen) / (platform::monotonicSeconds() - start));
    printMemory(server, "with them");
    ::kill(server, SIGKILL);
    ::waitpid(server, nullptr, 0);
    std::fflush(stdout);
    ::_exit(0);
}
