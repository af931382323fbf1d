#include "ui/pane/TemplatesViewModel.h"

#include <QVariantMap>

namespace vmr {

QVariantList TemplatesViewModel::slotRows() const {
    QVariantList out;
    for (const Row& row : state_.rows)
        out.append(QVariantMap{{"key", row.key},
                               {"digit", row.digit},
                               {"date", row.date},
                               {"present", row.present},
                               {"preferred", row.preferred}});
    return out;
}

}  // namespace vmr
