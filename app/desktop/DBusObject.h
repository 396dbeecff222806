// An object on the bus, made of tables: interfaces with their properties, methods and signals. It answers whatever comes, with
// a clear error where a call makes no sense, and tells of properties that have changed; what they mean is the tables' business.
// Methods return nothing.
// However many calls come at once, the main thread has time for others in between.
// Threads: main thread.
#pragma once

#include "platform/schedule/Scheduler.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QVariant>

#include <cstddef>
#include <deque>
#include <expected>
#include <functional>
#include <vector>

namespace quillet {

/// What a caller is told.
struct DBusProblem {
    QDBusError::ErrorType kind;
    QString sentence;
};
using DBusOutcome = std::expected<void, DBusProblem>;

/// Types are those of the D-Bus specification, such as "a{sv}".
struct DBusProperty {
    /// Whether clients are told of changes.
    enum class Changes { told, untold };

    QString name;
    QString type;
    Changes changes;
    std::function<QVariant()> value;
    /// Is given values of the property's type alone. Empty: it cannot be set.
    std::function<DBusOutcome(const QVariant& value)> set = {};
};

struct DBusMethod {
    struct Argument {
        QString name;
        /// One letter.
        QString type;
    };

    QString name;
    std::vector<Argument> arguments;
    /// Is given arguments of these types alone.
    std::function<DBusOutcome(const QVariantList& arguments)> call = {};
};

struct DBusInterface {
    QString name;
    std::vector<DBusProperty> properties;
    std::vector<DBusMethod> methods;
    /// Their `call` is empty.
    std::vector<DBusMethod> signalsSent = {};
};

class DBusObject final : public QDBusVirtualObject {
public:
    /// Changes within so short a time are told together.
    static constexpr double gatheringSeconds = 0.02;
    /// What answering may take before the loop has its turn.
    static constexpr double answeringSeconds = 0.005;
    /// More calls than these do not wait for their answer, which is an error.
    static constexpr std::size_t mostWaiting = 10'000;

    /// The object is at `path` from now on, for as long as it lives. `scheduler` outlives it.
    DBusObject(const QDBusConnection& bus, QString path, std::vector<DBusInterface> interfaces, Scheduler& scheduler);
    ~DBusObject() override;
    DBusObject(const DBusObject&) = delete;
    DBusObject& operator=(const DBusObject&) = delete;

    /// Properties may have changed: those that have are told of soon.
    void propertiesMayHaveChanged();
    void sendSignal(const QString& interface, const QString& name, const QVariantList& arguments);

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    using Answer = std::expected<QVariantList, DBusProblem>;

    void answerSome();
    void answer(const QDBusMessage& message);
    [[nodiscard]] Answer callMethod(const QDBusMessage& message);
    [[nodiscard]] Answer callProperties(const QDBusMessage& message);
    [[nodiscard]] Answer change(const DBusProperty& property, const QVariant& value);
    [[nodiscard]] QVariantMap values(const DBusInterface& interface) const;
    [[nodiscard]] QVariantMap toldValues(const DBusInterface& interface) const;
    void tellChanges();

    QDBusConnection m_bus;
    QString m_path;
    std::vector<DBusInterface> m_interfaces;
    Scheduler& m_scheduler;
    /// What clients know of each interface.
    std::vector<QVariantMap> m_told;
    /// In the order in which they came.
    std::deque<QDBusMessage> m_waiting;
    ScheduledTask m_answering;
    ScheduledTask m_telling;
    bool m_isTelling = false;
};

}  // namespace quillet
