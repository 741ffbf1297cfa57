// How a program asks the emulator's plugin for the number of instructions.
#pragma once

enum { countCall = 0x4B52, countMagic = 0x6B726F21 };
