#include "StaticServer.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <stdexcept>

#include "platform/base/Clock.h"

namespace multiscene::test {

namespace {

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int freePort() {
    const int probe = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    const bool bound = ::bind(probe, reinterpret_cast<sockaddr*>(&address), length) == 0 &&
                       ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length) == 0;
    ::close(probe);
    if (!bound) throw std::runtime_error("no free port");
    return ntohs(address.sin_port);
}

std::string configuration(const std::filesystem::path& folder, const std::filesystem::path& work, int port) {
    std::string text = "daemon off; master_process off; pid " + (work / "pid").string() + "; error_log " +
                       (work / "errors").string() + "; events {} http { access_log off; ";
    for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
        text += std::string(kind) + "_temp_path " + (work / kind).string() + "; ";
    return text + "server { listen 127.0.0.1:" + std::to_string(port) + "; root " + folder.string() +
           "; } }\n";
}

}  // namespace

StaticServer::StaticServer(const std::filesystem::path& folder, const std::filesystem::path& workFolder)
    : port_(freePort()) {
    std::filesystem::create_directories(workFolder);
    const std::string file = (workFolder / "nginx.conf").string(), errors = (workFolder / "errors").string();
    std::ofstream(file) << configuration(folder, workFolder, port_);
    process_ = ::fork();
    if (process_ == 0) {
        ::execlp("nginx", "nginx", "-e", errors.c_str(), "-c", file.c_str(), nullptr);
        ::_exit(127);
    }
    for (int attempt = 0; attempt < 200; ++attempt) {
        if (answers()) return;
        platform::sleepSeconds(0.05);
    }
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    throw std::runtime_error("nginx does not answer");
}

StaticServer::~StaticServer() {
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
}

bool StaticServer::answers() const {
    const int connection = ::socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port_);
    const bool connected =
        ::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(connection);
    return connected;
}

}  // namespace multiscene::test
