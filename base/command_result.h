#pragma once
// What a command handler answers to the loop that dispatched it: the xboard
// driver's commands and the tournament and game commands it calls. Only
// CMD_QUIT changes what the caller does.
namespace kobubase {

enum CommandResult : int { CMD_HANDLED = 0, CMD_ILLEGAL_MOVE = 1, CMD_IGNORED = 2, CMD_PRINTED = 3, CMD_QUIT = 4 };

}  // namespace kobubase
