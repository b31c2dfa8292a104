// What a piece of code throws, for tests that pin the library's error texts.
#ifndef VSUPT_TESTS_THROWNTEXT_H
#define VSUPT_TESTS_THROWNTEXT_H

#include <vsupt/VornException.h>

#include <string>

// The text of the Expected exception that action throws; an exception of
// another type goes on.
template <class Expected, class Action>
std::string textThrown(Action action)
{
    try {
        action();
    } catch (const Expected& error) {
        return error.getText();
    }
    return "nothing thrown";
}

// "text (code)" of the VornException that action throws.
template <class Action>
std::string thrownTextAndCode(Action action)
{
    try {
        action();
    } catch (const VornSupport::VornException& error) {
        return error.getText() + " (" + std::to_string(error.getCode()) + ")";
    }
    return "nothing thrown";
}

#endif
