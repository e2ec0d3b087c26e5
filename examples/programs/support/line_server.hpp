// A server for requests of one line each, on a TCP port of this computer.
#ifndef EXAMPLES_LINE_SERVER_HPP
#define EXAMPLES_LINE_SERVER_HPP

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <iostream>
#include <mutex>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "stop_signal.hpp"

class line_server {
  public:
    /// Returns the answer to a line; an exception becomes the answer "error: what()".
    using service = std::function<std::string(const std::string& line)>;

    /// @param port 0 for any that is free
    explicit line_server(std::uint16_t port) : listener_(socket(AF_INET, SOCK_STREAM, 0))
    {
        const int on = 1;
        sockaddr_in address{};
        socklen_t size = sizeof address;
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (listener_ < 0 || setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
            bind(listener_, generic, size) != 0 || listen(listener_, 64) != 0 ||
            getsockname(listener_, generic, &size) != 0) {
            const int reason = errno;
            close(listener_);
            throw std::system_error(reason, std::generic_category(), "port");
        }
        port_ = ntohs(address.sin_port);
    }
    line_server(const line_server&) = delete;
    line_server& operator=(const line_server&) = delete;
    ~line_server() { close(listener_); }

    /// Serves until SIGTERM or SIGINT. Every thread has its own service, and serves one client at a
    /// time.
    void run(unsigned threads, const std::function<service()>& make_service)
    {
        const stop_signal stop;
        std::vector<std::thread> workers;
        for (unsigned i = 0; i != threads; ++i) {
            workers.emplace_back([&] { accept_clients(make_service()); });
        }
        std::cout << "listening on port " << port_ << std::endl;
        stop.wait();
        {
            const std::lock_guard lock(mutex_);
            stopping_ = true;
            shutdown(listener_, SHUT_RDWR);
            for (const int client : clients_) shutdown(client, SHUT_RDWR);
        }
        for (std::thread& worker : workers) worker.join();
    }

  private:
    void accept_clients(const service& answer)
    {
        for (;;) {
            const int client = accept(listener_, nullptr, nullptr);
            {
                const std::lock_guard lock(mutex_);
                if (client >= 0) clients_.insert(client);
                if (stopping_) break;
            }
            if (client >= 0) {
                serve(client, answer);
            } else {
                // accept() may fail at once again, for example without a free descriptor.
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            const std::lock_guard lock(mutex_);
            clients_.erase(client);
            close(client);
        }
    }

    // Serves until the client disconnects, sends nothing for a while, or sends too long a line.
    static void serve(int client, const service& answer)
    {
        constexpr timeval patience = {30, 0};
        setsockopt(client, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        setsockopt(client, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        std::string received;
        char part[1024];
        while (received.size() < 4096) {
            const ssize_t size = recv(client, part, sizeof part, 0);
            if (size <= 0) return;
            received.append(part, static_cast<std::size_t>(size));
            for (std::size_t end = 0; (end = received.find('\n')) != std::string::npos;) {
                if (!send_all(client, answer_or_error(answer, received.substr(0, end)))) return;
                received.erase(0, end + 1);
            }
        }
    }

    static std::string answer_or_error(const service& answer, const std::string& line)
    {
        try {
            return answer(line);
        } catch (const std::exception& e) {
            return std::string("error: ") + e.what() + '\n';
        }
    }

    // MSG_NOSIGNAL: a client that has disconnected is an error here, not a SIGPIPE that ends the
    // server.
    static bool send_all(int client, const std::string& text)
    {
        for (std::size_t sent = 0; sent != text.size();) {
            const ssize_t size = send(client, &text[sent], text.size() - sent, MSG_NOSIGNAL);
            if (size <= 0) return false;
            sent += static_cast<std::size_t>(size);
        }
        return true;
    }

    int listener_;
    std::uint16_t port_ = 0;
    std::mutex mutex_;
    std::set<int> clients_;
    bool stopping_ = false;
};

#endif
