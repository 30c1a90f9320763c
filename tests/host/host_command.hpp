#pragma once
// Runs the host command with arguments and collects what it prints and its exit status.
#include <string>

#include <nlohmann/json.hpp>

struct CommandResult {
    int status = -1;
    std::string out;
    std::string err;
    nlohmann::json Json() const { return nlohmann::json::parse(out); }
};

// arguments are appended to the command as written (the caller quotes what needs quoting);
// shellBefore runs in the same shell first (say, "ulimit -v 400000;").
CommandResult RunHost(const std::string& arguments, const std::string& shellBefore = "");
