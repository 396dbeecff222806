// Updater that reads a feed of releases over HTTPS.
// Threads: as Updater says.
#pragma once

#include "platform/update/Updater.h"

#include <QObject>
#include <QUrl>
#include <QVersionNumber>

#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

namespace quillet {

class AppcastUpdater final : public QObject, public Updater {
    Q_OBJECT

public:
    /// Longer answers are none, and so are later ones.
    static constexpr qint64 maxFeedBytes = 1 << 20;
    static constexpr int timeoutMilliseconds = 20'000;
    static constexpr int maxRedirects = 5;

    /// Answers the feed's address at each question; empty: there is none.
    using FeedSource = std::function<QString()>;

    AppcastUpdater(FeedSource feed, QVersionNumber present);
    ~AppcastUpdater() override;
    AppcastUpdater(const AppcastUpdater&) = delete;
    AppcastUpdater& operator=(const AppcastUpdater&) = delete;

    void checkForUpdates(std::function<void(const Answer& answer)> answered) override;
    [[nodiscard]] bool isConfigured() const override { return !m_feed().isEmpty(); }

private:
    void request(const QUrl& address);
    void takeReply();
    void finish(const Answer& answer);
    void abandon();

    FeedSource m_feed;
    QVersionNumber m_present;
    std::function<void(const Answer& answer)> m_answered;
    std::unique_ptr<QNetworkAccessManager> m_network;
    QNetworkReply* m_reply = nullptr;
    int m_redirects = 0;
    int m_generation = 0;
};

}  // namespace quillet
