#include "app/desktop/DBusObject.h"

#include <QDBusVariant>
#include <QMetaType>

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

QString propertiesInterface() { return QStringLiteral("org.freedesktop.DBus.Properties"); }

std::unexpected<DBusProblem> problem(QDBusError::ErrorType kind, const QString& sentence)
{
    return std::unexpected(DBusProblem{ kind, sentence });
}

std::unexpected<DBusProblem> wrongArguments(const QString& wanted)
{
    return problem(QDBusError::InvalidArgs, QStringLiteral("The arguments are to be of the types “%1”.").arg(wanted));
}

template <typename T> const T* find(const std::vector<T>& all, const QString& name)
{
    const auto found = std::ranges::find(all, name, &T::name);
    return found != all.end() ? &*found : nullptr;
}

/// Of the types that properties are set with.
QString typeOf(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
        return QStringLiteral("d");
    case QMetaType::QString:
        return QStringLiteral("s");
    default:
        return {};
    }
}

QString signatureOf(const DBusMethod& method)
{
    QString signature;
    for (const DBusMethod::Argument& argument : method.arguments)
        signature += argument.type;
    return signature;
}

QString described(const DBusProperty& property)
{
    const QString annotation = property.changes == DBusProperty::Changes::told
        ? QString()
        : QStringLiteral("<annotation name=\"org.freedesktop.DBus.Property.EmitsChangedSignal\" value=\"false\"/>");
    return QStringLiteral("    <property name=\"%1\" type=\"%2\" access=\"%3\">%4</property>\n")
        .arg(property.name, property.type, property.set ? QStringLiteral("readwrite") : QStringLiteral("read"), annotation);
}

QString described(const QString& kind, const DBusMethod& member)
{
    QString text = QStringLiteral("    <%1 name=\"%2\">").arg(kind, member.name);
    for (const DBusMethod::Argument& argument : member.arguments)
        text += QStringLiteral("<arg name=\"%1\" type=\"%2\"/>").arg(argument.name, argument.type);
    return text + QStringLiteral("</%1>\n").arg(kind);
}

}  // namespace

DBusObject::DBusObject(const QDBusConnection& bus, QString path, std::vector<DBusInterface> interfaces, Scheduler& scheduler)
    : m_bus(bus),
      m_path(std::move(path)),
      m_interfaces(std::move(interfaces)),
      m_scheduler(scheduler)
{
    for (const DBusInterface& interface : m_interfaces)
        m_told.push_back(toldValues(interface));
    m_bus.registerVirtualObject(m_path, this);
}

DBusObject::~DBusObject() { m_bus.unregisterObject(m_path); }

QString DBusObject::introspect(const QString&) const
{
    QString text;
    for (const DBusInterface& interface : m_interfaces) {
        text += QStringLiteral("  <interface name=\"%1\">\n").arg(interface.name);
        for (const DBusProperty& property : interface.properties)
            text += described(property);
        for (const DBusMethod& method : interface.methods)
            text += described(QStringLiteral("method"), method);
        for (const DBusMethod& signal : interface.signalsSent)
            text += described(QStringLiteral("signal"), signal);
        text += QStringLiteral("  </interface>\n");
    }
    return text;
}

// ---- Calls ----

bool DBusObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    // The library describes the object, by `introspect`.
    if (message.interface().startsWith(QLatin1String("org.freedesktop.DBus.")) && message.interface() != propertiesInterface())
        return false;
    if (m_waiting.size() == mostWaiting) {
        connection.send(message.createErrorReply(QDBusError::LimitsExceeded, QStringLiteral("There are too many calls.")));
        return true;
    }
    if (m_waiting.empty())
        m_answering = m_scheduler.after(0, [this] { answerSome(); });
    m_waiting.push_back(message);
    return true;
}

void DBusObject::answerSome()
{
    const double end = m_scheduler.nowSeconds() + answeringSeconds;
    do {
        answer(m_waiting.front());
        m_waiting.pop_front();
    } while (!m_waiting.empty() && m_scheduler.nowSeconds() < end);
    if (!m_waiting.empty())
        m_answering = m_scheduler.after(0, [this] { answerSome(); });
}

void DBusObject::answer(const QDBusMessage& message)
{
    const Answer answer = message.interface() == propertiesInterface() ? callProperties(message) : callMethod(message);
    if (message.isReplyRequired())
        m_bus.send(answer ? message.createReply(*answer)
                          : message.createErrorReply(answer.error().kind, answer.error().sentence));
}

DBusObject::Answer DBusObject::callMethod(const QDBusMessage& message)
{
    for (const DBusInterface& interface : m_interfaces) {
        // A call need not name the interface.
        if (!message.interface().isEmpty() && message.interface() != interface.name)
            continue;
        const DBusMethod* method = find(interface.methods, message.member());
        if (method == nullptr)
            continue;
        const QString signature = signatureOf(*method);
        if (message.signature() != signature)
            return wrongArguments(signature);
        const DBusOutcome outcome = method->call(message.arguments());
        return outcome ? Answer() : std::unexpected(outcome.error());
    }
    return problem(QDBusError::UnknownMethod, QStringLiteral("There is no method of this name."));
}

DBusObject::Answer DBusObject::callProperties(const QDBusMessage& message)
{
    const QVariantList arguments = message.arguments();
    const bool isGetAll = message.member() == QLatin1String("GetAll");
    const bool isSet = message.member() == QLatin1String("Set");
    if (!isGetAll && !isSet && message.member() != QLatin1String("Get"))
        return problem(QDBusError::UnknownMethod, QStringLiteral("There is no method of this name."));
    const QString signature = isGetAll ? QStringLiteral("s") : isSet ? QStringLiteral("ssv") : QStringLiteral("ss");
    if (message.signature() != signature)
        return wrongArguments(signature);
    const DBusInterface* interface = find(m_interfaces, arguments[0].toString());
    if (interface == nullptr)
        return problem(QDBusError::UnknownInterface, QStringLiteral("There is no interface of this name."));
    if (isGetAll)
        return QVariantList{ values(*interface) };
    const DBusProperty* property = find(interface->properties, arguments[1].toString());
    if (property == nullptr)
        return problem(QDBusError::UnknownProperty, QStringLiteral("There is no property of this name."));
    if (isSet)
        return change(*property, arguments[2].value<QDBusVariant>().variant());
    return QVariantList{ QVariant::fromValue(QDBusVariant(property->value())) };
}

DBusObject::Answer DBusObject::change(const DBusProperty& property, const QVariant& value)
{
    if (!property.set)
        return problem(QDBusError::PropertyReadOnly, QStringLiteral("This property cannot be set."));
    if (typeOf(value) != property.type)
        return wrongArguments(property.type);
    const DBusOutcome outcome = property.set(value);
    return outcome ? Answer() : std::unexpected(outcome.error());
}

// ---- Changes ----

QVariantMap DBusObject::values(const DBusInterface& interface) const
{
    QVariantMap all;
    for (const DBusProperty& property : interface.properties)
        all.insert(property.name, property.value());
    return all;
}

QVariantMap DBusObject::toldValues(const DBusInterface& interface) const
{
    QVariantMap told;
    for (const DBusProperty& property : interface.properties)
        if (property.changes == DBusProperty::Changes::told)
            told.insert(property.name, property.value());
    return told;
}

void DBusObject::propertiesMayHaveChanged()
{
    if (std::exchange(m_isTelling, true))
        return;
    m_telling = m_scheduler.after(gatheringSeconds, [this] {
        m_isTelling = false;
        tellChanges();
    });
}

void DBusObject::tellChanges()
{
    for (std::size_t i = 0; i < m_interfaces.size(); ++i) {
        QVariantMap now = toldValues(m_interfaces[i]);
        QVariantMap changed;
        for (auto property = now.cbegin(); property != now.cend(); ++property)
            if (m_told[i].value(property.key()) != property.value())
                changed.insert(property.key(), property.value());
        m_told[i] = std::move(now);
        if (!changed.isEmpty())
            sendSignal(propertiesInterface(), QStringLiteral("PropertiesChanged"),
                       { m_interfaces[i].name, changed, QStringList() });
    }
}

void DBusObject::sendSignal(const QString& interface, const QString& name, const QVariantList& arguments)
{
    QDBusMessage signal = QDBusMessage::createSignal(m_path, interface, name);
    signal.setArguments(arguments);
    m_bus.send(signal);
}

}  // namespace quillet
