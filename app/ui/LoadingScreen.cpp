#include "app/ui/LoadingScreen.h"

#include "app/ui/BusyIndicator.h"
#include "app/ui/controls/Label.h"

#include <QProgressBar>
#include <QVBoxLayout>

namespace quillet {
namespace {

constexpr int indicatorSize = 44;
constexpr QSize barSize(280, 4);

}  // namespace

LoadingScreen::LoadingScreen(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_message(new Label(source, Label::Role::text, {})),
      m_bar(new QProgressBar)
{
    m_bar->setFixedSize(barSize);
    m_bar->setTextVisible(false);
    m_bar->setRange(0, 100);
    m_bar->setAccessibleName(tr("Progress"));
    QSizePolicy policy = m_bar->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_bar->setSizePolicy(policy);
    auto* column = new QVBoxLayout(this);
    column->addStretch(2);
    column->addWidget(new BusyIndicator(source, {}, indicatorSize), 0, Qt::AlignHCenter);
    column->addSpacing(20);
    column->addWidget(m_message, 0, Qt::AlignHCenter);
    column->addSpacing(12);
    column->addWidget(m_bar, 0, Qt::AlignHCenter);
    column->addStretch(3);
    connect(&state, &AppState::loadingStateChanged, this, &LoadingScreen::sync);
    sync();
}

void LoadingScreen::sync()
{
    const LoadingState& loading = m_state.loadingState();
    m_message->setText(QString::fromStdString(loading.message));
    m_bar->setVisible(loading.fraction.has_value());
    m_bar->setValue(static_cast<int>(100 * loading.fraction.value_or(0)));
}

}  // namespace quillet
