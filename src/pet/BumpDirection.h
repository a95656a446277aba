#pragma once

namespace nibbo {

/// The screen edge that the pet was pushed against.
enum class BumpDirection
{
    left,
    right,
    top,
    bottom
};

} // namespace nibbo
