// What a chart template holds: a pane's settings, and how its chart's view stood.
#pragma once

#include <optional>
#include <string>

#include "base/JsonMembers.h"
#include "chart/Camera.h"
#include "store/GexConfig.h"

/// A template is one JSON object: every key of the settings, and "_view" where there was a chart. Pure functions.
namespace vmr::TemplateRecord {

/// `view` is nothing where no chart shows the pane.
JsonMembers capture(const GexConfig& config, const std::optional<ViewSetup>& view);

/// The settings of a template, with the default for each that it lacks; the source is always the pane's own.
/// Nothing where it cannot be read.
std::optional<GexConfig> config(JsonMembers saved, const std::string& gexSource);

/// The view of a template; nothing where it has none. Numbers that are missing are NaN. It is automatic unless it says
/// otherwise and its price range is one.
std::optional<ViewSetup> view(const JsonMembers& saved);

/// The same where the newest close is `close`: a price range that the market has left by more than 5 % of it becomes
/// automatic.
ViewSetup viewNear(ViewSetup view, double close);

/// The template's `view` where it tells something, else what is `shown`.
ViewSetup viewOver(const ViewSetup& view, ViewSetup shown);

}  // namespace vmr::TemplateRecord
