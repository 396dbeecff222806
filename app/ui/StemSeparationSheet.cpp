#include "app/ui/StemSeparationSheet.h"

#include "app/ui/BusyIndicator.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/SheetModality.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"

#include <QAccessible>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>
#include <initializer_list>
#include <utility>

namespace quillet {
namespace {

using Kind = StemSeparationPhase::Kind;

constexpr int contentWidth = 480;
constexpr int titlePixels = 24;
constexpr int indicatorSize = 18;
constexpr int barHeight = 4;
constexpr int percentWidth = 48;
constexpr int percent = 100;

}  // namespace

StemSeparationSheet::StemSeparationSheet(FilePath fileURL, const Services& services, Handlers handlers, QWidget* parent)
    : QDialog(parent),
      m_fileURL(std::move(fileURL)),
      m_services(services),
      m_handlers(std::move(handlers)),
      m_self(std::make_shared<StemSeparationSheet*>(this)),
      m_explanation(
          new Label(services.theme, Label::Role::text,
                    tr("Stem separation splits the loaded track into six individual parts — Vocals, Drums, Bass, Guitar, "
                       "Piano, and Other — so you can mute or remove any combination while you practice."))),
      m_outdatedNote(
          new Label(services.theme, Label::Role::text,
                    tr("The file has changed since its stems were made. Separate it again to have stems of what it is "
                       "now."))),
      m_setupNote(
          new Label(services.theme, Label::Role::secondary,
                    tr("The first separation requires a one-time setup that may take several minutes. Subsequent runs will "
                       "be faster."))),
      m_licenceNote(
          new Label(services.theme, Label::Role::secondary,
                    tr("It fetches a model that is not part of Quillet, and whose licence is unclear: whether it covers what "
                       "you do with it is for you to judge."))),
      m_indicator(new BusyIndicator(services.theme, {}, indicatorSize)),
      m_message(new Label(services.theme, Label::Role::secondary, {})),
      m_bar(new QProgressBar),
      m_percent(new Label(services.theme, Label::Role::number, {})),
      m_error(new Label(services.theme, Label::Role::error, {})),
      m_hide(new QPushButton(tr("Continue in Background"))),
      m_cancel(new QPushButton(tr("Cancel"))),
      m_action(new QPushButton)
{
    setWindowTitle(tr("Separate Stems"));
    auto* title = new Label(services.theme, Label::Role::title, tr("Separate Stems"));
    title->setHeading(titlePixels);
    for (Label* text : { m_explanation, m_outdatedNote, m_setupNote, m_licenceNote, m_message, m_error }) {
        text->setTextFormat(Qt::PlainText);
        text->setWordWrap(true);
        text->setFixedWidth(scaled(contentWidth));
    }
    m_error->setTextInteractionFlags(Qt::TextSelectableByMouse);
    for (QPushButton* button : { m_hide, m_cancel })
        button->setAutoDefault(false);
    setButtonKind(*m_action, ButtonKind::accent);
    m_action->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* button : { m_hide, m_cancel, m_action })
        buttons->addWidget(button);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin);
    column->setSpacing(AppTheme::cardSpacing);
    column->setSizeConstraint(QLayout::SetFixedSize);
    for (QWidget* part : std::initializer_list<QWidget*>{ title, m_explanation, m_outdatedNote, m_setupNote, m_licenceNote,
                                                          m_message, makeProgress(), m_error })
        column->addWidget(part);
    column->addLayout(buttons);
    m_outdatedNote->hide();
    m_setupNote->hide();
    m_licenceNote->hide();

    connect(m_hide, &QAbstractButton::clicked, this, &QWidget::close);
    connect(m_cancel, &QAbstractButton::clicked, this, &QDialog::reject);
    connect(m_action, &QAbstractButton::clicked, this, [this] {
        if (m_services.separator.phase().kind == Kind::failed)
            m_services.separator.reset();
        else
            separate();
    });
    connect(&services.separator, &StemSeparator::phaseChanged, this, &StemSeparationSheet::takePhase);
    connect(&services.separator, &StemSeparator::progressMessageChanged, this, &StemSeparationSheet::showProgress);
    connect(&services.separator, &StemSeparator::separationProgressChanged, this, &StemSeparationSheet::showProgress);
    if (!services.separator.isRunning()) {
        services.separator.reset();
        lookForStems();
    }
    sync();
}

QWidget* StemSeparationSheet::makeProgress()
{
    m_progress = new QWidget;
    m_bar->setFixedHeight(barHeight);
    m_bar->setTextVisible(false);
    m_bar->setAccessibleName(tr("Progress"));
    m_percent->setFixedWidth(scaled(percentWidth));
    m_percent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* row = new QHBoxLayout(m_progress);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(12);
    row->addWidget(m_indicator);
    row->addWidget(m_bar, 1);
    row->addWidget(m_percent);
    return m_progress;
}

// ---- What it does ----

/// The disk may take its time: what it says comes later.
void StemSeparationSheet::lookForStems()
{
    m_services.background.run(
        [&separator = m_services.separator, &scheduler = m_services.scheduler, song = m_fileURL, self = std::weak_ptr(m_self)] {
            const Findings findings{ separator.hasCachedStems(song), separator.hasOutdatedStems(song), separator.isFirstUse() };
            scheduler.post([self, findings] {
                if (const auto sheet = self.lock())
                    (*sheet)->showFindings(findings);
            });
        });
}

void StemSeparationSheet::showFindings(const Findings& findings)
{
    m_outdatedNote->setVisible(findings.isOutdated);
    m_setupNote->setVisible(findings.isFirstUse);
    m_licenceNote->setVisible(findings.isFirstUse);
    sync();
    if (findings.isSeparated)
        separate();
}

void StemSeparationSheet::separate()
{
    m_services.separator.separate(m_fileURL);
    sync();
}

void StemSeparationSheet::takePhase()
{
    const StemSeparationPhase phase = m_services.separator.phase();
    if (phase.kind == Kind::complete && m_services.separator.fileURL() == m_fileURL) {
        // The last thing: it may destroy this sheet.
        m_handlers.onComplete(phase.stems);
        return;
    }
    sync();
    if (setInFront(*this, !phase.isRunning()))
        Q_EMIT isInFrontChanged(!phase.isRunning());
    if (phase.kind == Kind::failed) {
        QAccessibleEvent alert(m_error, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
}

void StemSeparationSheet::reject()
{
    if (m_services.separator.phase().kind == Kind::cancelling)
        return;
    if (m_services.separator.isRunning())
        m_services.separator.cancel();
    else
        m_handlers.onCancel();
}

void StemSeparationSheet::closeEvent(QCloseEvent* event)
{
    event->ignore();
    m_handlers.onCancel();
}

// ---- What is shown ----

void StemSeparationSheet::sync()
{
    const StemSeparationPhase& phase = m_services.separator.phase();
    const bool asks = !phase.isRunning() && phase.kind != Kind::failed;
    m_explanation->setVisible(asks);
    if (!asks) {
        m_outdatedNote->hide();
        m_setupNote->hide();
        m_licenceNote->hide();
    }
    m_message->setVisible(phase.isRunning());
    m_progress->setVisible(phase.isRunning());
    m_error->setVisible(phase.kind == Kind::failed);
    m_error->setText(QString::fromStdString(phase.message));
    m_hide->setVisible(phase.isRunning());
    m_cancel->setEnabled(phase.kind != Kind::cancelling);
    m_action->setVisible(!phase.isRunning());
    m_action->setText(phase.kind == Kind::failed ? tr("Try Again") : tr("Separate"));
    m_action->setEnabled(!m_services.separator.isRunning());
    showProgress();
}

void StemSeparationSheet::showProgress()
{
    const StemSeparator& separator = m_services.separator;
    const bool isSeparating = separator.phase().kind == Kind::separating;
    const auto part = isSeparating ? separator.separationProgress() : std::nullopt;
    // Without a range the bar says only that something goes on.
    m_bar->setRange(0, part ? percent : 0);
    m_bar->setValue(part ? static_cast<int>(std::lround(*part * percent)) : 0);
    m_percent->setText(part ? tr("%1%").arg(m_bar->value()) : QString());
    m_message->setText(separator.phase().kind == Kind::cancelling ? tr("Cancelling…")
                                                                  : QString::fromStdString(separator.progressMessage()));
}

}  // namespace quillet
