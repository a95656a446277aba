#pragma once

#include "base/Language.h"

#include <QString>

#include <array>
#include <optional>

namespace nibbo {

/// Everything that the pet can be doing; the order is that of every list. Its texts, pictures and groups are
/// one row each of a table; all functions are pure and may be called on any thread.
enum class PetState
{
    idle,
    thinking,
    coding,
    reading,
    searching,
    running,
    browsing,
    planning,
    compactingContext,
    responding,
    waitingApproval,
    waitingInput,
    success,
    warning,
    sleeping,
    dragging,
    coffee,
    relaxing,
    walking,
    drowsy,
    reactStartled,
    reactGrumpy,
    reactShoo,
    reactHappy,
    reactShy
};

inline constexpr int petStateCount = 25;

const std::array<PetState, petStateCount>& allPetStates();

/// The case's name.
QString rawValue(PetState state);
/// Exact and case-sensitive; nothing for an unknown text.
std::optional<PetState> petState(const QString& rawValue);

/// The still picture; several states share one.
QString imageName(PetState state);
/// The folder of the state's frames.
QString frameAnimationName(PetState state);
/// Frames per second of that animation.
double frameFPS(PetState state);
/// The symbol beside the activity line; only tool poses have one.
std::optional<QString> activityIcon(PetState state);
/// The state's own short line.
QString bubbleText(PetState state, AppLanguage language);

/// What a tool step is drawn in: coding, reading, searching, running, browsing, planning.
bool isToolPose(PetState state);
/// The five answers to the pointer, reactStartled to reactShy.
bool isReaction(PetState state);
/// The bubble of such a state stays until the state changes.
bool isPersistent(PetState state);
/// States in which the pet has time for whoever hovers over it.
bool isCalm(PetState state);

} // namespace nibbo
