// What a piece of code throws, for tests that pin the library's error texts.
#ifndef VSUPT_TESTS_TEXT_THROWNTEXT_H
#define VSUPT_TESTS_TEXT_THROWNTEXT_H

#include <vsupt/VornException.h>

#include <string>

// "text (code)" of the VornException the action throws.
template <class Action>
std::string thrownText(Action action)
{
    try {
        action();
    } catch (const VornSupport::VornException& error) {
        return error.getText() + " (" + std::to_string(error.getCode()) + ")";
    }
    return "nothing thrown";
}

#endif
