// A product service in the test's own process: plain HTTP on the address of the tests' product family.
#pragma once

#include <winsock2.h>

#include "product_family.h"

#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// What goes out for a request, head and all: each piece in a send of its own, with a pause after it.
struct Reply
{
    std::vector<std::string> pieces;
    DWORD pauseMs = 0;
    bool resets = false; ///< Ends the connection with a reset instead of an orderly close.

    static Reply Http(const std::string& body, const std::string& status = "200 OK")
    {
        return {
            {"HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
             body}};
    }
};

class LoopbackServer
{
public:
    LoopbackServer()
    {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        m_listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        const BOOL reuse = TRUE;
        setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&reuse), sizeof reuse);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = inet_addr(TESTS_ADDRESS);
        address.sin_port = htons(18444);
        if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            std::abort();
        }
        listen(m_listener, 16);
        m_thread = std::thread([this] {
            for (SOCKET client; (client = accept(m_listener, nullptr, nullptr)) != INVALID_SOCKET;) {
                Serve(client);
            }
        });
    }

    ~LoopbackServer() { Stop(); }

    /// Refuses connections from now on.
    void Stop()
    {
        closesocket(std::exchange(m_listener, INVALID_SOCKET));
        m_thread.joinable() ? m_thread.join() : void();
    }

    void AnswerProbe(Reply reply) { Set(m_probe, std::move(reply)); }
    void Answer(Reply reply) { Set(m_updates, std::move(reply)); }
    void Answer(const std::string& body) { Answer(Reply::Http(body)); }

    /// The requests since the last call, whole.
    std::vector<std::string> TakeRequests()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_requests, {});
    }

private:
    void Set(Reply& reply, Reply value)
    {
        const std::lock_guard lock(m_mutex);
        reply = std::move(value);
    }

    void Serve(SOCKET client)
    {
        std::string request;
        char block[4096];
        // Each request ends with its body, of which the last field is "up" or there is none.
        for (int count = 1; count > 0 && request.find("&up=") == request.npos &&
                            request.find("Length: 0") == request.npos;) {
            count = recv(client, block, sizeof block, 0);
            request.append(block, static_cast<std::size_t>(count > 0 ? count : 0));
        }
        Reply reply;
        {
            const std::lock_guard lock(m_mutex);
            m_requests.push_back(request);
            reply = request.find("/check.php") == request.npos ? m_updates : m_probe;
        }
        for (const std::string& piece : reply.pieces) {
            send(client, piece.data(), static_cast<int>(piece.size()), 0);
            Sleep(reply.pauseMs);
        }
        const linger atOnce{1, 0};
        if (reply.resets) {
            setsockopt(client, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce), sizeof atOnce);
        }
        closesocket(client);
    }

    std::mutex m_mutex;
    Reply m_probe = Reply::Http("1");
    Reply m_updates;
    std::vector<std::string> m_requests;
    SOCKET m_listener;
    std::thread m_thread;
};
