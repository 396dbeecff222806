// One component of a time (minutes, seconds, milliseconds): a field with two step buttons and its unit. It keeps within its
// range, shows leading zeros and never carries over.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QWidget>

#include <cstdint>
#include <functional>

namespace quillet {

class ValueField;

class TimePickerField final : public QWidget {
    Q_OBJECT

public:
    /// Both ends belong to the range.
    struct Range {
        std::int64_t lowest;
        std::int64_t highest;
    };

    /// `label` is the unit shown after the field; `name` is what a screen reader calls it.
    TimePickerField(const ThemeSource& source, const QString& label, const QString& name, Range range,
                    QWidget* parent = nullptr);

    [[nodiscard]] std::int64_t value() const { return m_value; }
    /// Shows another value; nothing is committed.
    void setValue(std::int64_t value);

    /// Called after every change made through this field, and after every entry whether it changed anything or not.
    void onCommit(std::function<void()> commit) { m_onCommit = std::move(commit); }

    void increment() { step(1); }
    void decrement() { step(-1); }

private:
    [[nodiscard]] QString formatted(std::int64_t value) const;
    void step(int direction);
    void commit(const QString& text);

    Range m_range;
    std::int64_t m_value;
    ValueField* m_field;
    std::function<void()> m_onCommit;
};

}  // namespace quillet
