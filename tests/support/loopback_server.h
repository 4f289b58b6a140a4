// A product service in the test's own process: plain HTTP on the address of the tests' product family.
#pragma once

#include <winsock2.h>

#include <ws2tcpip.h>

#include "support/tests_family.h"

#include <functional>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

inline const std::string Offer = R"([{"name":"X","version":"2","url":"u"}])";

/// What goes out for a request, head and all: each piece in a send of its own, with a pause after it.
struct Reply
{
    std::vector<std::string> pieces;
    DWORD pauseMs = 0;

    static Reply Http(const std::string& body, const std::string& status = "200 OK")
    {
        const std::string size = std::to_string(body.size());
        return {{"HTTP/1.1 " + status + "\r\nContent-Length: " + size + "\r\n\r\n" + body}};
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
        sockaddr_in address{AF_INET, htons(18444), {}, {}};
        EXPECT_EQ(inet_pton(AF_INET, ServiceAddress, &address.sin_addr), 1);
        EXPECT_EQ(bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        listen(m_listener, 16);
        m_thread = std::thread([this] {
            for (SOCKET client = 0; (client = accept(m_listener, nullptr, nullptr)) != INVALID_SOCKET;) {
                Serve(client);
            }
        });
    }
    ~LoopbackServer() { Stop(); }

    /// Refuses connections from now on.
    void Stop()
    {
        closesocket(std::exchange(m_listener, INVALID_SOCKET));
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    // No lock: what a call of the library asks for is served before it returns, and nothing in between.
    void AnswerProbe(const std::string& body) { m_probe = Reply::Http(body); }
    /// What happens when the probe has arrived, before it is answered.
    void AtProbe(std::function<void()> action) { m_atProbe = std::move(action); }
    void Answer(Reply reply) { m_updates = std::move(reply); }
    void Answer(const std::string& body) { Answer(Reply::Http(body)); }

    /// The requests since the last call of this, one after the other.
    std::string TakeRequests() { return std::exchange(m_requests, {}); }

private:
    void Serve(SOCKET client)
    {
        std::string request;
        char block[4096];
        // Each request ends with its body, of which the last field is "up" or there is none.
        const std::regex end("&up=|Length: 0");
        for (int count = 0;
             !std::regex_search(request, end) && (count = recv(client, block, sizeof block, 0)) > 0;) {
            request.append(block, static_cast<std::size_t>(count));
        }
        m_requests += request;
        const bool isProbe = request.find("/check.php") != request.npos;
        if (isProbe) {
            m_atProbe();
        }
        const Reply reply = isProbe ? m_probe : m_updates;
        for (const std::string& piece : reply.pieces) {
            send(client, piece.data(), static_cast<int>(piece.size()), 0);
            Sleep(reply.pauseMs);
        }
        closesocket(client);
    }

    Reply m_probe = Reply::Http("1");
    Reply m_updates = Reply::Http(Offer);
    std::function<void()> m_atProbe = [] {};
    std::string m_requests;
    SOCKET m_listener;
    std::thread m_thread;
};
