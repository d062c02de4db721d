// Declares the handlers that are written as functions: those of the rows WRB_WRITTEN of the command table.
#pragma once

class CCmdProtocol;

#define WRB_COMMAND(name, handler, role, fields, answers)
#define WRB_WRITTEN(name, function, role, fields, answers) void function(CCmdProtocol& message);
#include "CommandTable.inc"
