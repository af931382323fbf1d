// Operations that the model calls at their moment and whose work is not written yet. Each does nothing; when one gets
// its work, it moves to a file of its own.
#include "model/AppModel.h"

namespace vmr {

// Presence and templates
void AppModel::tellPresence() {}
void AppModel::stopPresence() {}
void AppModel::autoApplyPreferredTemplate() {}

}  // namespace vmr
