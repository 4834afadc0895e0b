#include "syscmd/commands/command.h"

void setResponse(std::string& response, const char* text, const char* rest)
{
    response.clear();
    response += text;
    response += rest;
}
