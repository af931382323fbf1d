// JSON written in a test.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "base/Json.h"

namespace vmr::test {

inline Json json(const std::string& text) {
    const auto value = Json::parse(text);
    EXPECT_TRUE(value) << text;
    return value.value_or(Json());
}

}  // namespace vmr::test
