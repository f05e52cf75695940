#include "platform/http/Sockets.h"

#include <boost/asio/dispatch.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>

#include "platform/base/CurrentError.h"
#include "platform/base/Log.h"
#include "platform/http/Acknowledged.h"

namespace platform::http {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

struct Loop::Core {
    asio::io_context context{1};
    asio::executor_work_guard<asio::io_context::executor_type> staysUp{context.get_executor()};
};

Loop::Loop() : core_(std::make_unique<Core>()) {}
Loop::~Loop() = default;

void Loop::post(std::function<void()> work) { asio::post(core_->context, std::move(work)); }
void Loop::dispatch(std::function<void()> work) { asio::dispatch(core_->context, std::move(work)); }

void Loop::after(std::chrono::milliseconds delay, std::function<void()> work) {
    const auto timer = std::make_shared<asio::steady_timer>(core_->context, delay);
    timer->async_wait([timer, work = std::move(work)](const error_code& failure) {
        if (!failure) work();
    });
}

void Loop::run() {
    for (;;) {
        try {
            core_->context.run();
            return;
        } catch (...) {
            log::info("http: " + std::string(currentError().what()));
        }
    }
}

void Loop::stop() { core_->context.stop(); }

void Loop::drain() {
    core_->context.restart();
    core_->context.poll();
}

class Tls {
  public:
    asio::ssl::context context{asio::ssl::context::tls_server};
};

std::shared_ptr<Tls> loadTls(const TlsFiles& files) {
    if (!files.isUsed()) return nullptr;
    const auto tls = std::make_shared<Tls>();
    using Context = asio::ssl::context;
    tls->context.set_options(Context::default_workarounds | Context::no_sslv2 | Context::no_sslv3 |
                             Context::no_tlsv1 | Context::no_tlsv1_1 | Context::single_dh_use |
                             SSL_OP_NO_RENEGOTIATION);
    error_code failure;
    tls->context.use_certificate_chain_file(files.certificates, failure);
    if (failure) throw Error(ErrorKind::Failed, "no certificate: " + failure.message(), files.certificates);
    tls->context.use_private_key_file(files.key, Context::pem, failure);
    if (failure) throw Error(ErrorKind::Failed, "no key of the certificate: " + failure.message(), files.key);
    return tls;
}

namespace {

constexpr unsigned deadPeerMilliseconds = 30'000;
constexpr std::chrono::milliseconds acceptPause{100};

std::string addressText(asio::ip::address address) {
    if (address.is_v6() && address.to_v6().is_v4_mapped())
        address = asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6());
    return address.to_string();
}

auto whenMoved(Socket::Moved done) {
    return
        [done = std::move(done)](const error_code& failure, std::size_t bytes) { done(failure ? 0 : bytes); };
}

template <typename Stream>
class SocketOf : public Socket {
  public:
    template <typename... Arguments>
    explicit SocketOf(std::string peer, tcp::socket socket, Arguments&... arguments)
        : stream_(std::move(socket), arguments...), peer_(std::move(peer)) {
        limitSocket(lowest().native_handle(), deadPeerMilliseconds);
    }

    void read(char* room, std::size_t size, Moved done) override {
        stream_.async_read_some(asio::buffer(room, size), whenMoved(std::move(done)));
    }
    void write(std::string_view bytes, Moved done) override {
        stream_.async_write_some(asio::buffer(bytes.data(), bytes.size()), whenMoved(std::move(done)));
    }
    void close() override {
        error_code ignored;
        lowest().close(ignored);
    }
    uint64_t acknowledged() override { return acknowledgedBytes(lowest().native_handle()); }
    const std::string& peer() const override { return peer_; }

  protected:
    typename Stream::lowest_layer_type& lowest() { return stream_.lowest_layer(); }

    Stream stream_;
    std::string peer_;
};

class PlainSocket : public SocketOf<tcp::socket> {
  public:
    using SocketOf::SocketOf;
    void start(Moved done) override {
        asio::post(stream_.get_executor(), [done = std::move(done)] { done(1); });
    }
    void finish(Moved done) override {
        error_code ignored;
        stream_.shutdown(tcp::socket::shutdown_send, ignored);
        asio::post(stream_.get_executor(), [done = std::move(done)] { done(1); });
    }
};

class TlsSocket : public SocketOf<asio::ssl::stream<tcp::socket>> {
  public:
    TlsSocket(std::string peer, tcp::socket socket, std::shared_ptr<Tls> tls)
        : SocketOf(std::move(peer), std::move(socket), tls->context), tls_(std::move(tls)) {}
    void start(Moved done) override {
        stream_.async_handshake(
            asio::ssl::stream_base::server,
            [done = std::move(done)](const error_code& failure) { done(failure ? 0 : 1); });
    }
    void finish(Moved done) override {
        // Says so by TLS and waits until the client has; whoever calls does not wait for long.
        stream_.async_shutdown(
            [done = std::move(done)](const error_code& failure) { done(failure ? 0 : 1); });
    }

  private:
    std::shared_ptr<Tls> tls_;
};

class TcpListener : public Listener {
  public:
    TcpListener(std::shared_ptr<Loop> loop, std::shared_ptr<Tls> tls)
        : loop_(std::move(loop)),
          tls_(std::move(tls)),
          acceptor_(std::make_shared<tcp::acceptor>(loop_->core().context)) {}

    void open(const tcp::endpoint& endpoint, error_code& failure) {
        acceptor_->open(endpoint.protocol(), failure);
        if (failure) return;
        acceptor_->set_option(tcp::acceptor::reuse_address(true), failure);
        if (endpoint.protocol() == tcp::v6())
            acceptor_->set_option(asio::ip::v6_only(!endpoint.address().is_unspecified()), failure);
        acceptor_->bind(endpoint, failure);
        if (!failure) acceptor_->listen(tcp::acceptor::max_listen_connections, failure);
    }

    void start(Accepted accepted) override { accept(acceptor_, loop_, tls_, std::move(accepted)); }
    void close() override {
        error_code ignored;
        acceptor_->close(ignored);
    }
    uint16_t port() const override { return acceptor_->local_endpoint().port(); }

  private:
    static void accept(const std::shared_ptr<tcp::acceptor>& acceptor, const std::weak_ptr<Loop>& loop,
                       const std::shared_ptr<Tls>& tls, Accepted accepted) {
        if (!acceptor->is_open()) return;
        acceptor->async_accept([acceptor, loop, tls, accepted = std::move(accepted)](
                                   const error_code& failure, tcp::socket socket) {
            const auto alive = loop.lock();
            if (!alive || failure == asio::error::operation_aborted) return;
            // Most of all when no file can be opened any more: it would fail again at once.
            if (failure) return alive->after(acceptPause, [=] { accept(acceptor, loop, tls, accepted); });
            try {
                take(std::move(socket), tls, accepted);
            } catch (...) {
                // Without memory for one client there may be some for the next.
                log::info("http: " + std::string(currentError().what()));
            }
            accept(acceptor, loop, tls, accepted);
        });
    }

    static void take(tcp::socket socket, const std::shared_ptr<Tls>& tls, const Accepted& accepted) {
        error_code gone;
        const tcp::endpoint peer = socket.remote_endpoint(gone);
        if (gone) return;
        std::string name = addressText(peer.address());
        if (tls)
            accepted(std::make_unique<TlsSocket>(std::move(name), std::move(socket), tls));
        else
            accepted(std::make_unique<PlainSocket>(std::move(name), std::move(socket)));
    }

    std::shared_ptr<Loop> loop_;
    std::shared_ptr<Tls> tls_;
    std::shared_ptr<tcp::acceptor> acceptor_;
};

}  // namespace

std::unique_ptr<Listener> listenOn(const std::shared_ptr<Loop>& loop, const std::string& address,
                                   uint16_t port, std::shared_ptr<Tls> tls) {
    const bool isV6 = address.find(':') != std::string::npos;
    const std::string name = (isV6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
    error_code failure;
    const auto ip = asio::ip::make_address(address, failure);
    if (failure) throw Error(ErrorKind::Usage, "not an address to listen on", name);
    auto listener = std::make_unique<TcpListener>(loop, std::move(tls));
    listener->open({ip, port}, failure);
    if (failure == asio::error::address_in_use)
        throw Error(ErrorKind::Failed, "cannot listen: another program has this port", name);
    if (failure) throw errnoError(failure.value(), "cannot listen", name);
    return listener;
}

}  // namespace platform::http
