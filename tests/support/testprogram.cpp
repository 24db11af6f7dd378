// SPDX-License-Identifier: MIT
#include "support/testprogram.h"

#include <filesystem>
#include <iostream>
#include <map>

namespace testprogram {
namespace {

std::map<std::string, Test> &tests()
{
    static std::map<std::string, Test> tests; // not before the files that add theirs
    return tests;
}

int tellTests(const char *program)
{
    std::cerr << "usage: " << program << " TEST [ARGUMENT...]\nTests:\n";
    for (const auto &[name, test] : tests())
        std::cerr << "  " << name << '\n';
    return 2;
}

} // namespace

bool add(const char *sourceFile, Test test)
{
    return tests().emplace(std::filesystem::path(sourceFile).stem(), test).second;
}

} // namespace testprogram

int main(int argc, char *argv[])
{
    const auto found = argc > 1 ? testprogram::tests().find(argv[1]) : testprogram::tests().end();
    if (found == testprogram::tests().end())
        return testprogram::tellTests(argv[0]);
    return found->second(argc - 1, argv + 1);
}
