// The rows of the simulator's cards, as views take them.
#pragma once

#include <vector>

#include "model/SimPanelFacts.h"
#include "ui/widgets/RowsModel.h"

namespace vmr {

RowsModel::Rows simRows(const std::vector<SimPositionRow>& rows, const SimEngine& engine);
RowsModel::Rows simRows(const std::vector<SimOrderRow>& rows);
RowsModel::Rows simRows(const std::vector<SimMetric>& rows);
RowsModel::Rows simRows(const std::vector<SimDay>& rows);
RowsModel::Rows simRows(const std::vector<SimHistoryRow>& rows);
RowsModel::Rows simRows(const std::vector<SimFillRow>& rows);

}  // namespace vmr
