// The tables of the job file and the keys that each may hold, with a line that would be right for each: what the reader
// knows of names. Pure functions; any thread.
#pragma once

#include <span>
#include <string>
#include <vector>

// A key of a table, and a line that would be right where the key is missing.
struct SJobKey
{
    std::string m_name;
    std::string m_example;
};

// One of the file's tables: its name in messages ("[Stage]") and the keys that it may hold.
struct SJobTable
{
    std::string m_name;
    std::vector<SJobKey> m_keys;
};

const SJobTable& JobTable_Root();
const SJobTable& JobTable_Stage();
const SJobTable& JobTable_DPOption();
const SJobTable& JobTable_DPConfig();
const SJobTable& JobTable_PrintParam();
const SJobTable& JobTable_InkStripe();
const SJobTable& JobTable_Pages();
const SJobTable& JobTable_CartInfo();
const SJobTable& JobTable_Unit();

// All of them.
std::span<const SJobTable* const> JobTables();

bool JobTable_HasKey(const SJobTable& table, const std::string& name);
std::vector<std::string> JobTable_KeyNames(const SJobTable& table);

// The line that would be right for this key of the table.
const std::string& JobTable_Example(const SJobTable& table, const std::string& name);
