#include "app/ui/SheetModality.h"

#include <QDialog>

namespace quillet {

bool setInFront(QDialog& sheet, bool isInFront)
{
    const Qt::WindowModality modality = isInFront ? Qt::WindowModal : Qt::NonModal;
    if (!sheet.isVisible() || sheet.windowModality() == modality)
        return false;
    // A window in view keeps its modality until it is shown again.
    const QPoint place = sheet.pos();
    sheet.hide();
    sheet.setWindowModality(modality);
    sheet.move(place);
    sheet.show();
    return true;
}

}  // namespace quillet
