#include "app/ui/OpenFromURLSheet.h"

#include "app/download/WebAddress.h"
#include "app/ui/BusyIndicator.h"
#include "app/ui/FileNames.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/SheetModality.h"
#include "app/ui/controls/Card.h"
#include "app/ui/controls/ElidedLabel.h"
#include "app/ui/controls/Fonts.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace quillet {
namespace {

constexpr int sheetWidth = 560;
constexpr int titlePixels = 24;
constexpr int fieldPadding = 6;
constexpr int indicatorSize = 18;
constexpr int barHeight = 4;
constexpr int wordsWidth = 140;
constexpr int maxErrorHeight = 160;

}  // namespace

OpenFromURLSheet::OpenFromURLSheet(const Services& services, Handlers handlers, QWidget* parent)
    : QDialog(parent),
      m_services(services),
      m_handlers(std::move(handlers)),
      m_downloadDirectory(services.settings.downloadDirectory()),
      m_urlField(new QLineEdit),
      m_directory(new ElidedLabel(services.theme, Label::Role::secondary)),
      m_bar(new QProgressBar),
      m_words(new Label(services.theme, Label::Role::number, {})),
      m_errorText(new Label(services.theme, Label::Role::error, {})),
      m_submit(new QPushButton(tr("Download && Open"))),
      m_update(new QPushButton(tr("Update yt-dlp")))
{
    setWindowTitle(tr("Open from URL"));
    auto* title = new Label(services.theme, Label::Role::title, tr("Open from URL"));
    title->setHeading(titlePixels);
    auto* cancel = new QPushButton(tr("Cancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QAbstractButton::clicked, this, &QDialog::reject);
    setButtonKind(*m_submit, ButtonKind::accent);
    m_submit->setDefault(true);
    connect(m_submit, &QAbstractButton::clicked, this, &OpenFromURLSheet::startDownload);
    m_update->setAutoDefault(false);
    m_update->setToolTip(tr("Fetches the newest yt-dlp: sites change, and an old one cannot read them any more"));
    connect(m_update, &QAbstractButton::clicked, this, &OpenFromURLSheet::updateDownloader);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_update);
    buttons->addStretch();
    buttons->addWidget(cancel);
    buttons->addWidget(m_submit);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin);
    column->setSpacing(AppTheme::cardSpacing);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(title);
    column->addWidget(makeQuestions());
    column->addWidget(makeProgress());
    column->addWidget(makeError());
    column->addLayout(buttons);
    showDirectory();
    sync();
}

QWidget* OpenFromURLSheet::makeQuestions()
{
    m_urlField->setPlaceholderText(tr("https://example.com/song.mp3"));
    m_urlField->setAccessibleName(tr("Web address"));
    m_urlField->setFixedHeight(scaled(AppTheme::controlHeight));
    m_urlField->setTextMargins(fieldPadding, 0, fieldPadding, 0);
    connect(m_urlField, &QLineEdit::textChanged, this, [this](const QString& text) {
        // A pasted line brings its end along.
        static const QRegularExpression lineEnds(QStringLiteral("[\\r\\n\\x{2028}\\x{2029}]"));
        if (text.contains(lineEnds))
            m_urlField->setText(QString(text).remove(lineEnds));
        sync();
    });
    auto* choose = new QPushButton(tr("Select"));
    choose->setAccessibleName(tr("Select the download folder"));
    choose->setAutoDefault(false);
    connect(choose, &QAbstractButton::clicked, this, &OpenFromURLSheet::chooseDirectory);
    auto* folder = new QHBoxLayout;
    folder->setSpacing(12);
    folder->addWidget(new Label(m_services.theme, Label::Role::text, tr("Download folder")));
    folder->addWidget(m_directory, 1);
    folder->addWidget(choose);
    auto* card = new Card(m_services.theme);
    card->setFixedWidth(scaled(sheetWidth) - 2 * AppTheme::windowMargin);
    auto* column = new QVBoxLayout(card);
    column->setContentsMargins(AppTheme::cardPadding, AppTheme::cardPadding, AppTheme::cardPadding, AppTheme::cardPadding);
    column->setSpacing(12);
    column->addWidget(m_urlField);
    column->addLayout(folder);
    return card;
}

QWidget* OpenFromURLSheet::makeProgress()
{
    m_progress = new QWidget;
    m_bar->setFixedHeight(barHeight);
    m_bar->setTextVisible(false);
    m_bar->setAccessibleName(tr("Progress"));
    m_words->setFixedWidth(scaled(wordsWidth));
    m_words->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* stop = new QPushButton(tr("Stop"));
    stop->setAutoDefault(false);
    connect(stop, &QAbstractButton::clicked, this, &OpenFromURLSheet::stopDownload);
    auto* row = new QHBoxLayout(m_progress);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(12);
    row->addWidget(new BusyIndicator(m_services.theme, {}, indicatorSize));
    row->addWidget(m_bar, 1);
    row->addWidget(m_words);
    row->addWidget(stop);
    return m_progress;
}

QWidget* OpenFromURLSheet::makeError()
{
    m_errorText->setTextFormat(Qt::PlainText);
    m_errorText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_errorText->setWordWrap(true);
    m_errorText->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_error = new QScrollArea;
    m_error->setFrameShape(QFrame::NoFrame);
    m_error->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_error->setFixedWidth(scaled(sheetWidth) - 2 * AppTheme::windowMargin);
    m_error->setWidget(m_errorText);
    m_error->viewport()->setAutoFillBackground(false);
    m_errorText->setAutoFillBackground(false);
    return m_error;
}

std::string OpenFromURLSheet::urlText() const { return m_urlField->text().toStdString(); }

bool OpenFromURLSheet::canSubmit() const { return WebAddress::parse(urlText()).has_value(); }

void OpenFromURLSheet::startDownload()
{
    const auto address = WebAddress::parse(urlText());
    if (!address || m_download)
        return;
    auto download = RunningDownload::start(m_services.downloader, *address, m_downloadDirectory,
                                           { [this] { showProgress(); }, [this](const auto& outcome) { finish(outcome); } });
    if (!download) {
        showFailure(download.error());
        return;
    }
    m_download = std::move(*download);
    m_errorMessage.reset();
    m_mayNeedUpdate = false;
    sync();
    stand(false);
}

void OpenFromURLSheet::stopDownload()
{
    m_download.reset();
    sync();
    askAgain();
}

void OpenFromURLSheet::finish(const URLDownloader::Outcome& outcome)
{
    m_download.reset();
    if (!outcome) {
        showFailure(outcome.error());
        return;
    }
    sync();
    // The last thing: it may destroy this sheet.
    m_handlers.onLoad(*outcome);
}

void OpenFromURLSheet::showFailure(const DownloadError& error)
{
    m_errorMessage = errorText(error);
    m_mayNeedUpdate = error.kind == DownloadError::Kind::processFailed;
    sync();
    // Whoever plays meanwhile keeps the keys.
    if (isActiveWindow())
        askAgain();
    QAccessibleEvent alert(m_errorText, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void OpenFromURLSheet::updateDownloader()
{
    m_services.updater.update([self = QPointer(this)](const YtDlpUpdater::Outcome& outcome) {
        if (!self || self->isDownloading())
            return;
        self->m_mayNeedUpdate = false;
        self->m_errorMessage = !outcome ? QString::fromStdString(outcome.error())
            : outcome->isUpdate         ? tr("yt-dlp is now %1. Try again.").arg(QString::fromStdString(outcome->version))
                                        : tr("There is no newer yt-dlp. The site may have changed today, or need an account.");
        self->sync();
    });
    m_mayNeedUpdate = false;
    m_errorMessage = tr("The newest yt-dlp is being fetched…");
    sync();
}

void OpenFromURLSheet::askAgain()
{
    stand(true);
    m_urlField->setFocus();
}

std::unique_ptr<RunningDownload> OpenFromURLSheet::releaseDownload()
{
    if (m_download)
        m_download->setListener({});
    return std::exchange(m_download, nullptr);
}

void OpenFromURLSheet::reject() { m_handlers.onCancel(); }

void OpenFromURLSheet::chooseDirectory()
{
    if (m_panel) {
        m_panel->raise();
        return;
    }
    const auto take = [this](const std::vector<FilePath>& folders) {
        m_downloadDirectory = folders.front();
        m_services.settings.defaults.setString(DownloadSettingsStore::directoryKey, m_downloadDirectory.native());
        showDirectory();
    };
    m_panel = new FilePanel(*this, { tr("Download folder"), m_downloadDirectory, true, tr("Select"), {} }, take, openPanel);
}

// ---- What is shown ----

void OpenFromURLSheet::sync()
{
    m_submit->setEnabled(!isDownloading() && canSubmit());
    m_urlField->setReadOnly(isDownloading());
    m_progress->setVisible(isDownloading());
    m_error->setVisible(m_errorMessage.has_value());
    m_update->setVisible(m_mayNeedUpdate && !isDownloading());
    if (m_errorMessage) {
        m_errorText->setText(*m_errorMessage);
        int width = m_error->width();
        if (m_errorText->heightForWidth(width) > scaled(maxErrorHeight))
            width -= m_error->verticalScrollBar()->sizeHint().width();
        m_errorText->setFixedSize(width, m_errorText->heightForWidth(width));
        m_error->setFixedHeight(std::min(scaled(maxErrorHeight), m_errorText->height()));
    }
    if (isDownloading())
        showProgress();
}

void OpenFromURLSheet::showProgress()
{
    const auto percent = m_download->percent();
    // Without a range the bar says only that something goes on.
    m_bar->setRange(0, percent ? 100 : 0);
    m_bar->setValue(percent.value_or(0));
    m_words->setText(m_download->words());
}

void OpenFromURLSheet::showDirectory()
{
    const QString folder = abbreviatedPath(m_downloadDirectory);
    m_directory->setWholeText(folder, tr("Download folder %1").arg(folder));
}

void OpenFromURLSheet::stand(bool inFront)
{
    if (setInFront(*this, inFront))
        Q_EMIT isInFrontChanged(inFront);
}

}  // namespace quillet
