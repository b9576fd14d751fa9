#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// A stand-in for a network between a planner's computer and a shared server: a proxy on 127.0.0.1
// that forwards each connection to a unix socket (the test server's) and holds every message half a
// round trip on its way there and half on its way back, as a line of that latency would. Messages are
// held side by side, never one after another. It also counts round trips: a message from the client
// that follows an answer of the server, the wait a client pays for each statement it sends alone.
namespace testing_support {

class LatencyProxy {
public:
    // Listens on a port of 127.0.0.1 that the system chooses.
    LatencyProxy(std::string unixSocket, std::chrono::microseconds roundTrip)
        : m_target(std::move(unixSocket)), m_roundTrip(roundTrip.count()) {
        m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
        if (m_listener < 0) throw std::runtime_error("latency proxy: no socket");
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (::bind(m_listener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(m_listener, 16) != 0 ||
            ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            ::close(m_listener);
            throw std::runtime_error("latency proxy: cannot listen on 127.0.0.1");
        }
        m_port = ntohs(address.sin_port);
        m_acceptor = std::thread([this] { acceptLoop(); });
    }
    ~LatencyProxy() {
        m_stopping = true;
        ::shutdown(m_listener, SHUT_RDWR);
        m_acceptor.join();
        ::close(m_listener);
        std::lock_guard<std::mutex> lock(m_linksMutex);
        for (auto& link : m_links)
            link->stop();
    }
    LatencyProxy(const LatencyProxy&) = delete;
    LatencyProxy& operator=(const LatencyProxy&) = delete;

    int port() const { return m_port; }
    void setRoundTrip(std::chrono::microseconds roundTrip) { m_roundTrip = roundTrip.count(); }
    std::int64_t roundTrips() const { return m_roundTrips; }
    void resetRoundTrips() { m_roundTrips = 0; }

private:
    using Clock = std::chrono::steady_clock;

    // One way of one connection: a reader that stamps each message as it comes, and a writer that
    // passes it on once its time is up.
    class Way {
    public:
        Way(LatencyProxy& proxy, int from, int to, bool towardServer, std::atomic<bool>& lastTowardServer)
            : m_proxy(proxy), m_from(from), m_to(to), m_towardServer(towardServer), m_last(lastTowardServer) {
            m_reader = std::thread([this] { readLoop(); });
            m_writer = std::thread([this] { writeLoop(); });
        }
        ~Way() {
            m_reader.join();
            m_writer.join();
        }

    private:
        void readLoop() {
            std::vector<char> buffer(64 * 1024);
            while (true) {
                const ssize_t n = ::recv(m_from, buffer.data(), buffer.size(), 0);
                if (n <= 0) break;
                if (m_towardServer && !m_last.exchange(true)) ++m_proxy.m_roundTrips;
                if (!m_towardServer) m_last = false;
                const auto due = Clock::now() + std::chrono::microseconds(m_proxy.m_roundTrip / 2);
                std::lock_guard<std::mutex> lock(m_mutex);
                m_queue.push_back({due, std::string(buffer.data(), static_cast<std::size_t>(n))});
                m_ready.notify_one();
            }
            std::lock_guard<std::mutex> lock(m_mutex);
            m_closed = true;
            m_ready.notify_one();
        }
        void writeLoop() {
            while (true) {
                std::unique_lock<std::mutex> lock(m_mutex);
                m_ready.wait(lock, [this] { return m_closed || !m_queue.empty(); });
                if (m_queue.empty()) break;
                auto [due, bytes] = std::move(m_queue.front());
                m_queue.pop_front();
                lock.unlock();
                std::this_thread::sleep_until(due);
                if (!sendAll(bytes)) break;
            }
            // The other end learns that this way is closed, and its own reader then stops too.
            ::shutdown(m_to, SHUT_WR);
            ::shutdown(m_from, SHUT_RD);
        }
        bool sendAll(const std::string& bytes) {
            std::size_t sent = 0;
            while (sent < bytes.size()) {
                const ssize_t n = ::send(m_to, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
                if (n <= 0) return false;
                sent += static_cast<std::size_t>(n);
            }
            return true;
        }

        LatencyProxy& m_proxy;
        int m_from, m_to;
        bool m_towardServer;
        std::atomic<bool>& m_last;
        std::mutex m_mutex;
        std::condition_variable m_ready;
        std::deque<std::pair<Clock::time_point, std::string>> m_queue;
        bool m_closed = false;
        std::thread m_reader, m_writer;
    };

    class Link {
    public:
        Link(LatencyProxy& proxy, int client, int server) : m_client(client), m_server(server) {
            m_toServer = std::make_unique<Way>(proxy, client, server, true, m_lastTowardServer);
            m_toClient = std::make_unique<Way>(proxy, server, client, false, m_lastTowardServer);
        }
        ~Link() {
            stop();
            m_toServer.reset();
            m_toClient.reset();
            ::close(m_client);
            ::close(m_server);
        }
        void stop() {
            ::shutdown(m_client, SHUT_RDWR);
            ::shutdown(m_server, SHUT_RDWR);
        }

    private:
        int m_client, m_server;
        std::atomic<bool> m_lastTowardServer{false};
        std::unique_ptr<Way> m_toServer, m_toClient;
    };

    void acceptLoop() {
        while (!m_stopping) {
            const int client = ::accept(m_listener, nullptr, nullptr);
            if (client < 0) break;
            const int yes = 1;
            ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
            const int server = ::socket(AF_UNIX, SOCK_STREAM, 0);
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            std::strncpy(address.sun_path, m_target.c_str(), sizeof address.sun_path - 1);
            if (server < 0 || ::connect(server, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
                if (server >= 0) ::close(server);
                ::close(client);
                continue;
            }
            std::lock_guard<std::mutex> lock(m_linksMutex);
            m_links.push_back(std::make_unique<Link>(*this, client, server));
        }
    }

    std::string m_target;
    std::atomic<std::int64_t> m_roundTrip;  // microseconds
    std::atomic<std::int64_t> m_roundTrips{0};
    std::atomic<bool> m_stopping{false};
    int m_listener = -1;
    int m_port = 0;
    std::thread m_acceptor;
    std::mutex m_linksMutex;
    std::list<std::unique_ptr<Link>> m_links;
};

// The unix socket that a libpq address naming a socket folder (host=/dir, as the test server's does)
// reaches, and the same address sent through a proxy on 127.0.0.1 instead. Empty when the address
// names no socket folder.
inline std::string pgSocketOf(const std::string& address) {
    const auto param = [&](const std::string& name) -> std::string {
        for (std::size_t at = address.find(name + "="); at != std::string::npos;
             at = address.find(name + "=", at + 1)) {
            if (at == 0 || address[at - 1] == '?' || address[at - 1] == '&') {
                const std::size_t begin = at + name.size() + 1;
                return address.substr(begin, address.find('&', begin) - begin);
            }
        }
        return {};
    };
    const std::string host = param("host");
    if (host.empty() || host[0] != '/') return {};
    const std::string port = param("port");
    return host + "/.s.PGSQL." + (port.empty() ? "5432" : port);
}

inline std::string pgAddressThrough(const std::string& address, int proxyPort) {
    std::string out;
    std::size_t at = 0;
    const std::size_t query = address.find('?');
    out = address.substr(0, query == std::string::npos ? address.size() : query);
    std::string rest = query == std::string::npos ? "" : address.substr(query + 1);
    std::string kept;
    while (at <= rest.size() && !rest.empty()) {
        const std::size_t end = std::min(rest.find('&', at), rest.size());
        const std::string part = rest.substr(at, end - at);
        if (part.rfind("host=", 0) != 0 && part.rfind("port=", 0) != 0 && !part.empty()) kept += "&" + part;
        at = end + 1;
    }
    return out + "?host=127.0.0.1&port=" + std::to_string(proxyPort) + kept;
}

}  // namespace testing_support
