// The commands whose cost is their pipe traffic, each beside the bare system calls that it cannot do without. One call
// of a function is one command; false when it fails. Any thread.
#pragma once

namespace wrb::bench {

bool Echo();
bool BareEcho();

bool GetServerScan();  // the server-wide settings: an empty uid
bool BareReply();

bool GetManualScan();
bool FiveConnections();  // two requests, their two answers, the reply

bool SetManualScan();
bool TwoMessages();  // the settings and the agent's "changed" bit

bool GetAllSettings();  // of an agent
bool GetTheirParts();   // the commands that answer with a part of it

bool CountFirewall();
bool OneMessage();

}  // namespace wrb::bench
