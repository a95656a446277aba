#include "pet/PetAnimation.h"

#include <array>
#include <cstddef>

namespace nibbo {
namespace {

struct Row
{
    PetState state;
    PetAnimation motion;
};

// State, scale from and to, rotation from and to, x from and to, y from and to, duration.
// clang-format off
constexpr std::array<Row, petStateCount> rows{{
    {PetState::idle, {0.985, 1.02, 0, 0, 0, 0, 0, 0, 2.3}},
    {PetState::thinking, {1, 1, -6, 6, 0, 0, 0, 0, 1.1}},
    {PetState::coding, {1, 1, 0, 0, 0, 0, 4, -4, 0.75}},
    {PetState::reading, {1, 1, -4, 4, 0, 0, 0, 0, 1.6}},
    {PetState::searching, {1, 1, -2, 2, -7, 7, 0, 0, 0.7}},
    {PetState::running, {1, 1, 0, 0, 0, 0, 5, -5, 0.5}},
    {PetState::browsing, {1, 1, 0, 0, 0, 0, 2, -4, 0.9}},
    {PetState::planning, {1, 1, -3, 5, 0, 0, 0, 0, 1.1}},
    {PetState::compactingContext, {1, 0.92, 0, 0, 0, 0, -3, 5, 0.34}},
    {PetState::responding, {1, 1, 0, 0, 0, 0, 2, -3, 0.5}},
    {PetState::waitingApproval, {1, 1, 0, 0, 0, 0, 0, -11, 0.42}},
    {PetState::waitingInput, {1, 1, 0, 0, 0, 0, 2, -4, 1.0}},
    {PetState::success, {1, 1.03, 0, 0, 0, 0, 0, -16, 0.46}},
    {PetState::warning, {1, 1, 0, 0, -6, 6, 0, 0, 0.11}},
    {PetState::sleeping, {0.99, 1.012, 0, 0, 0, 0, 0, 0, 3.1}},
    {PetState::dragging, {1, 1, 0, 0, 0, 0, 0, 0, 0.8}},
    {PetState::coffee, {1, 1, 0, 0, 0, 0, 2, -3, 1.4}},
    {PetState::relaxing, {0.99, 1.02, 0, 0, 0, 0, 1, -4, 1.0}},
    {PetState::walking, {1, 1, 0, 0, 0, 0, 1, -3, 0.5}},
    {PetState::drowsy, {1, 1, -2, 7, 0, 0, 0, 0, 1.8}},
    {PetState::reactStartled, {1, 1.04, -3, 3, 0, 0, 0, -20, 0.18}},
    {PetState::reactGrumpy, {1, 0.97, 0, 0, -5, 5, 0, 0, 0.14}},
    {PetState::reactShoo, {1, 1, -5, 5, -8, 8, 0, 0, 0.22}},
    {PetState::reactHappy, {1, 1.03, 0, 0, 0, 0, 0, -18, 0.28}},
    {PetState::reactShy, {1, 1, -4, 4, -4, 4, 0, 0, 0.35}},
}};
// clang-format on

constexpr bool inOrderOfStates()
{
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].state != static_cast<PetState>(i))
            return false;
    }
    return true;
}
static_assert(inOrderOfStates());

} // namespace

const PetAnimation& PetAnimation::forState(PetState state)
{
    return rows[static_cast<std::size_t>(state)].motion;
}

} // namespace nibbo
