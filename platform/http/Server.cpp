#include "platform/http/Server.h"

#include <future>
#include <thread>

#include "platform/base/CurrentError.h"
#include "platform/base/Log.h"
#include "platform/http/Service.h"
#include "platform/http/Sockets.h"

namespace platform::http {

struct Server::Core {
    std::shared_ptr<Loop> loop = std::make_shared<Loop>();
    std::vector<std::unique_ptr<Listener>> listeners;
    uint16_t port = 0;
    std::shared_ptr<Service> service;
    std::thread thread;

    /// Does the work in the server's thread and waits for it.
    void inLoop(const std::function<void()>& work) {
        std::promise<void> done;
        loop->post([&] {
            try {
                work();
            } catch (...) {
                log::info("http: " + std::string(currentError().what()));
            }
            done.set_value();
        });
        done.get_future().wait();
    }
};

Server::Server(ServerOptions options, Handler& handler) : core_(std::make_unique<Core>()) {
    const auto tls = loadTls({options.certificateFile, options.keyFile});
    core_->port = options.port;
    for (const std::string& address : options.addresses) {
        core_->listeners.push_back(listenOn(core_->loop, address, core_->port, tls));
        core_->port = core_->listeners.back()->port();
    }
    core_->service = std::make_shared<Service>(options, core_->port, core_->loop, handler);
    for (const auto& listener : core_->listeners)
        listener->start([service = core_->service](auto socket) { service->add(std::move(socket)); });
    core_->thread = std::thread([loop = core_->loop] { loop->run(); });
}

Server::~Server() { stop(std::chrono::milliseconds(0)); }

uint16_t Server::port() const { return core_->port; }
ServerCounts Server::counts() const { return core_->service->counts(); }

void Server::stop(std::chrono::milliseconds patience) {
    if (!core_->thread.joinable()) return;
    core_->inLoop([&] {
        for (const auto& listener : core_->listeners) listener->close();
        core_->service->stop();
    });
    if (!core_->service->waitUntilEmpty(patience)) core_->inLoop([&] { core_->service->closeAll(); });
    core_->loop->stop();
    core_->thread.join();
    core_->loop->drain();
}

}  // namespace platform::http
