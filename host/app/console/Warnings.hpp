#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace tavrin::app
{

class Console;

/// Collects warnings and prints those of one kind as one line with a count. Two warnings are of one
/// kind if they differ only in the file at the start, in quoted names and in numbers. Destroying
/// the object prints what has not been printed.
class Warnings
{
public:
    explicit Warnings(Console& console) : mConsole(console) {}
    Warnings(const Warnings&) = delete;
    Warnings& operator=(const Warnings&) = delete;
    ~Warnings() { print(); }

    /// `text` is one line, "FILE: problem", without "warning: ".
    void add(const std::string& text);

    /// Prints and forgets the warnings so far, in the order in which their kinds came up.
    void print();

private:
    struct Kind
    {
        std::string first;
        std::size_t count = 0;
    };

    Console& mConsole;
    std::mutex mMutex;
    std::vector<Kind> mKinds;
    std::map<std::string, std::size_t> mIndexOfKind;
};

}
