#include "platform/update/AppcastUpdater.h"

#include "platform/update/AppcastFeed.h"

#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <utility>

namespace quillet {
namespace {

/// Nobody else can listen or answer there.
bool isLoopback(const QUrl& address)
{
    return address.host() == QLatin1String("localhost") || QHostAddress(address.host()).isLoopback();
}

bool isAllowed(const QUrl& address)
{
    if (!address.isValid() || address.host().isEmpty())
        return false;
    return address.scheme() == QLatin1String("https") || (address.scheme() == QLatin1String("http") && isLoopback(address));
}

std::unexpected<std::string> refused(const QString& sentence) { return std::unexpected(sentence.toStdString()); }

}  // namespace

AppcastUpdater::AppcastUpdater(FeedSource feed, QVersionNumber present)
    : m_feed(std::move(feed)),
      m_present(std::move(present))
{
}

AppcastUpdater::~AppcastUpdater() { abandon(); }

void AppcastUpdater::checkForUpdates(std::function<void(const Answer& answer)> answered)
{
    abandon();
    ++m_generation;
    m_answered = std::move(answered);
    m_redirects = 0;
    const QString feed = m_feed();
    const QUrl address(feed, QUrl::StrictMode);
    if (feed.isEmpty())
        finish(refused(tr("This build of Quillet has no update feed. Whoever gave you the program also has its updates.")));
    else if (!isAllowed(address))
        finish(refused(tr("The update feed “%1” is no secure web address (https).").arg(feed)));
    else
        request(address);
}

void AppcastUpdater::request(const QUrl& address)
{
    if (!m_network)
        m_network = std::make_unique<QNetworkAccessManager>();
    QNetworkRequest question(address);
    question.setTransferTimeout(timeoutMilliseconds);
    // Each step is looked at here.
    question.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    question.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    m_reply = m_network->get(question);
    connect(m_reply, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64) {
        if (received > maxFeedBytes)
            finish(refused(tr("The update feed is too long to be one.")));
    });
    connect(m_reply, &QNetworkReply::finished, this, &AppcastUpdater::takeReply);
}

void AppcastUpdater::takeReply()
{
    const QUrl next = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (!next.isEmpty()) {
        const QUrl address = m_reply->url().resolved(next);
        abandon();
        if (++m_redirects > maxRedirects || !isAllowed(address))
            finish(refused(tr("The update feed leads elsewhere again and again, or to an address that is not secure.")));
        else
            request(address);
        return;
    }
    if (m_reply->error() != QNetworkReply::NoError) {
        finish(refused(tr("The update feed cannot be reached: %1. Try again later.").arg(m_reply->errorString())));
        return;
    }
    const auto releases = releasesIn(m_reply->readAll());
    const auto newest = releases ? newestAfter(*releases, m_present) : std::nullopt;
    if (!releases || releases->empty())
        finish(refused(tr("What the update feed answers cannot be read. Try again later.")));
    else
        finish(newest ? std::optional(Release{ newest->version.toString().toStdString(), newest->notes.toStdString(),
                                               newest->page.toStdString() })
                      : std::nullopt);
}

void AppcastUpdater::finish(const Answer& answer)
{
    abandon();
    // Never inside the question, and for the last one only.
    QMetaObject::invokeMethod(
        this,
        [this, answer, generation = m_generation] {
            if (generation == m_generation && m_answered)
                std::exchange(m_answered, nullptr)(answer);
        },
        Qt::QueuedConnection);
}

void AppcastUpdater::abandon()
{
    if (m_reply == nullptr)
        return;
    QNetworkReply* reply = std::exchange(m_reply, nullptr);
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}

}  // namespace quillet
