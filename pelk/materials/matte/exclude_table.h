#pragma once

#include "pelk/contract/material.h"

/// Makes `table` the ascending render ids of the objects in a list parameter, duplicates included;
/// without a parameter it becomes empty. Plug-ins without geometry are reported, if `log` is not
/// null, and left out. Keeps the table's memory.
void fillExcludeTable(PelkPluginParameter* parameter, GrowTable<int>& table, MessageLog* log);
