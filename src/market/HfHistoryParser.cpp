#include "market/HfHistoryParser.h"

#include "market/Coerce.h"

namespace vmr::HfHistoryParser {

HfCandle hfCandle(JsonView object) {
    return {coerce::dbl(object["o"]), coerce::dbl(object["h"]), coerce::dbl(object["l"]), coerce::dbl(object["c"])};
}

}  // namespace vmr::HfHistoryParser
