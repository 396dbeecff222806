#include "platform/update/AppcastUpdater.h"
#include "tests/support/EventLoop.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <map>
#include <optional>

namespace quillet {
namespace {

QByteArray feedOf(const QByteArray& items)
{
    return R"(<?xml version="1.0"?><rss version="2.0" xmlns:u="urn:updates"><channel><title>Quillet</title>)" + items
        + "</channel></rss>";
}

QByteArray item(const QByteArray& version, const QByteArray& more = {})
{
    return "<item><link>https://example.org/get</link>" + more + "<enclosure url=\"https://example.org/q\" u:version=\""
        + version + "\"/></item>";
}

QByteArray answer(const QByteArray& body) { return "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + body; }

/// A server that answers each path with bytes of its own; those of "/endless" have no end.
struct FeedServer : QTcpServer {
    std::map<QByteArray, QByteArray> answers;

    FeedServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = nextPendingConnection();
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                const QByteArray path = socket->readLine().split(' ').value(1);
                socket->readAll();
                if (path == "/endless") {
                    connect(socket, &QTcpSocket::bytesWritten, socket, [socket] { socket->write(QByteArray(1 << 16, 'x')); });
                    socket->write(answer("<rss>"));
                    return;
                }
                socket->write(answers[path]);
                socket->disconnectFromHost();
            });
        });
    }

    [[nodiscard]] QString address(const char* path) const
    {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(QLatin1String(path));
    }
};

TEST(AppcastUpdater, TellsOfTheNewestReleaseAndSaysWhyItCannot)
{
    EventLoop loop;
    FeedServer server;
    server.answers = {
        { "/news",
          answer(feedOf(item("1.10.0", "<description>&lt;b&gt;New&lt;/b&gt;</description>") + item("1.9.3") + item("latest")
                        + item("1000000000000000000000000000000") + item("7.0", "<u:os>windows</u:os>") + "<item/>")) },
        { "/none", answer(feedOf(item("1.2") + item("1.2.0"))) },
        { "/element",
          answer(feedOf("<item><link>javascript:x()</link><u:shortVersionString> 2.0 </u:shortVersionString>"
                        "<u:version>57</u:version></item>")) },
        { "/moved", "HTTP/1.1 302 Found\r\nLocation: /news\r\nConnection: close\r\n\r\n" },
        { "/html", answer("<!DOCTYPE html><html><body>1.9</body></html>") },
        { "/cut", answer(feedOf(item("3.0")).chopped(20)) },
        { "/nonsense", answer(feedOf(item("latest"))) },
        { "/empty", answer({}) },
        { "/bomb",
          answer("<!DOCTYPE rss [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
                 "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\">]>"
                 "<rss><channel><item><description>&d;&d;&d;&d;&d;&d;</description></item></channel></rss>") },
        { "/forever", "HTTP/1.1 302 Found\r\nLocation: /forever\r\nConnection: close\r\n\r\n" },
        { "/away", "HTTP/1.1 302 Found\r\nLocation: http://example.org/\r\nConnection: close\r\n\r\n" },
        { "/missing", "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n" },
    };
    QString feed;
    AppcastUpdater updater([&feed] { return feed; }, QVersionNumber(1, 2));
    const auto ask = [&](const QString& address) {
        feed = address;
        std::optional<Updater::Answer> answered;
        updater.checkForUpdates([&](const Updater::Answer& given) { answered = given; });
        EXPECT_FALSE(answered) << "never inside the question";
        EXPECT_TRUE(loop.runUntil([&] { return answered.has_value(); })) << address.toStdString();
        return answered.value_or(std::unexpected("no answer"));
    };

    const Release newest{ "1.10", "<b>New</b>", "https://example.org/get" };
    EXPECT_EQ(ask(server.address("/news")), Updater::Answer(newest));
    EXPECT_EQ(ask(server.address("/moved")), Updater::Answer(newest));
    EXPECT_EQ(ask(server.address("/element")), Updater::Answer(Release{ "2", {}, {} })) << "no page that acts";
    EXPECT_EQ(ask(server.address("/none")), Updater::Answer(std::nullopt));
    for (const char* path : { "/html", "/cut", "/nonsense", "/empty", "/bomb", "/forever", "/away", "/missing", "/endless" }) {
        const auto failed = ask(server.address(path));
        EXPECT_TRUE(!failed && failed.error().ends_with('.')) << path;
    }
    for (const char* address : { "", "http://example.org/feed", "file:///etc/passwd", "https://", "x" })
        EXPECT_FALSE(ask(QLatin1String(address))) << address;
    server.close();
    EXPECT_FALSE(ask(server.address("/news")));

    // Only the last question is answered.
    int answers = 0;
    feed.clear();
    updater.checkForUpdates([&](const auto&) { answers += 100; });
    updater.checkForUpdates([&](const auto&) { ++answers; });
    EXPECT_TRUE(loop.runUntil([&] { return answers > 0; }));
    EXPECT_EQ(answers, 1);
}

}  // namespace
}  // namespace quillet
