#include "app/core/FollowChoice.h"

namespace quillet {
namespace {

constexpr const char* followKey = "QLT.followsPlayhead";

}  // namespace

FollowChoice::FollowChoice(DefaultsDomain& defaults, QObject* parent)
    : QObject(parent),
      m_defaults(defaults),
      m_isOn(defaults.boolean(followKey).value_or(false))
{
}

void FollowChoice::toggle()
{
    m_isOn = !m_isOn;
    m_defaults.setBoolean(followKey, m_isOn);
    Q_EMIT changed();
}

}  // namespace quillet
