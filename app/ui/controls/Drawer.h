// Holds what is shown at times only, and slides open and shut. Shut, nothing of its content can be seen, heard or reached with
// keys; it jumps where the system asks for reduced motion, and while it is not in view.
// Threads: main thread.
#pragma once

#include <QWidget>

class QVariantAnimation;

namespace quillet {

class Drawer final : public QWidget {
    Q_OBJECT

public:
    /// Takes `content` over. It begins shut.
    explicit Drawer(QWidget* content, QWidget* parent = nullptr);

    void setOpen(bool isOpen);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* m_content;
    /// How much of it is open, 0 to 1.
    QVariantAnimation* m_slide;
};

}  // namespace quillet
