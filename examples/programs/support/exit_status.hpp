// The exit status of a program that reports failures by exceptions.
#ifndef EXAMPLES_EXIT_STATUS_HPP
#define EXAMPLES_EXIT_STATUS_HPP

#include <exception>
#include <iostream>
#include <stdexcept>

/// Calls `work()`, and prints the message of what it throws. @return 0 for success, 2 for an
/// invalid argument, 1 for any other failure
template <class Work>
int exit_status_of(const char* program, Work work)
{
    try {
        work();
        return 0;
    } catch (const std::invalid_argument& e) {
        std::cerr << program << ": " << e.what() << '\n';
        return 2;
    } catch (const std::exception& e) {
        std::cerr << program << ": " << e.what() << '\n';
        return 1;
    }
}

#endif
