#include "ui/pane/SessionViewModel.h"

namespace vmr {

void SessionViewModel::set(State state) {
    const State old = std::exchange(state_, std::move(state));
    const auto differs = [&](auto... fields) { return ((old.*fields != state_.*fields) || ...); };
    if (differs(&State::setupProblem, &State::signInHint)) emit setupChanged();
    if (differs(&State::signingIn, &State::authError)) emit signInChanged();
    if (differs(&State::userEmail)) emit userEmailChanged();
    if (differs(&State::connected, &State::connLimited)) emit connectionChanged();
    if (differs(&State::status)) emit statusChanged();
    if (differs(&State::entered)) emit enteredChanged();  // last: it changes which views there are
}

void SessionViewModel::notifyAll() {
    emit setupChanged();
    emit signInChanged();
    emit userEmailChanged();
    emit connectionChanged();
    emit statusChanged();
    emit enteredChanged();
}

void SessionViewModel::signIn(const QString& email, const QString& password, bool remember) {
    if (actions_.signIn) actions_.signIn(email, password, remember);
}

void SessionViewModel::cancelSignIn() {
    if (actions_.cancelSignIn) actions_.cancelSignIn();
}

void SessionViewModel::signOut() {
    if (actions_.signOut) actions_.signOut();
}

void SessionViewModel::signOutAndClose() { onSignOutAndClose_ ? onSignOutAndClose_() : signOut(); }

void SessionViewModel::setOnPractice(std::function<void()> start) {
    const bool could = canPractice();
    onPractice_ = std::move(start);
    if (could != canPractice()) emit canPracticeChanged();
}

void SessionViewModel::startPractice() {
    if (onPractice_) onPractice_();
}

QString SessionViewModel::lastEmail() const { return actions_.lastEmail ? actions_.lastEmail() : QString(); }

}  // namespace vmr
