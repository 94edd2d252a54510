#include "console/console.h"

int main(int count, char** arguments) { return RunConsole({arguments + 1, arguments + (count > 0 ? count : 1)}); }
