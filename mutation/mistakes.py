"""Small, plausible mistakes in src/, at or beside the lines that `pick` has chosen: twenty with the seed 20261121, then
twenty with the seed 20261122.

Each is (name, file, right, wrong): the text `right` stands in the file exactly once.
"""

PARSE = "src/tovira_parse/"

MISTAKES = [
    (
        "zoom-swapped-targets",
        PARSE + "display/zoom_video.cpp",
        "&cutLeft, &zoomw, &zoomh, &connector}}",
        "&cutLeft, &zoomh, &zoomw, &connector}}",
    ),
    (
        "amba-lost-repeat",
        PARSE + "memory/amba_bus.cpp",
        "runItemCommand(kAmbaBus, cmdText, repeat, oldOffset)",
        "runItemCommand(kAmbaBus, cmdText, repeat & 0, oldOffset)",
    ),
    (
        "memory-dropped-upper-case",
        PARSE + "memory/memory_engine.cpp",
        "    if (casing == UpperCasing::kWholeText) {\n        upperCase(cmdText);\n    }\n",
        "    static_cast<void>(casing);\n",
    ),
    (
        "editor-any-second-byte",
        PARSE + "line_editor.cpp",
        "sequence == Sequence::kAfterSecondByte && editing.secondByte == '[' && handleBracketByte",
        "sequence == Sequence::kAfterSecondByte && handleBracketByte",
    ),
    (
        "dispatcher-stops-at-a-refused-row",
        PARSE + "dispatcher.cpp",
        "status = kStatusModeRefused;\n            continue;",
        "status = kStatusModeRefused;\n            break;",
    ),
    (
        "edid-other-delimiters",
        PARSE + "display/ddc_edid.cpp",
        "do_edid_parse(tokens.word());",
        "do_edid_parse(tokens.argument());",
    ),
    (
        "help-dropped-lower-case",
        PARSE + "console_commands.cpp",
        "    lowerCase(word);\n    const int row = findCmdRow(word, 0);",
        "    const int row = findCmdRow(word, 0);",
    ),
    (
        "kernel-narrow-label",
        PARSE + "memory/kernel_memory.cpp",
        ".runDigits = 16,",
        ".runDigits = 8,",
    ),
    (
        "hdmi-swapped-keywords",
        PARSE + "display/hdmi.cpp",
        '{"DDC", runDdc}, {"EDID", runEdid}',
        '{"EDID", runEdid}, {"DDC", runDdc}',
    ),
    (
        "spi-wrong-status",
        PARSE + "display/spi_flash.cpp",
        "    const char* const name = arguments.argument();\n    if (name == nullptr) {\n"
        "        return kStatusBadArgument;\n    }\n    const auto address",
        "    const char* const name = arguments.argument();\n    if (name == nullptr) {\n"
        "        return kStatusDone;\n    }\n    const auto address",
    ),
    (
        "table-corrected-awls",
        PARSE + "command_table.cpp",
        '"awls [adr] [cnt]\\n"\n     "\\t[adr]: the write auto inc address on register region\\n"\n'
        '     "\\t[cnt]: the times of read four bytes\\n"',
        '"awls [adr] [cnt]\\n"\n     "\\t[adr]: the write auto inc address on register region\\n"\n'
        '     "\\t[cnt]: the times of write four bytes\\n"',
    ),
    (
        "ltc-swapped-arguments",
        PARSE + "board/power_monitors.cpp",
        "!request.arguments.number(channel) || !request.arguments.number(addressIndex)",
        "!request.arguments.number(addressIndex) || !request.arguments.number(channel)",
    ),
    (
        "mcu-dropped-line-end",
        PARSE + "display/mcu.cpp",
        "        printBlockByte(label, i, readByte(dataByteAt(i)));\n    }\n    putchar('\\n');\n",
        "        printBlockByte(label, i, readByte(dataByteAt(i)));\n    }\n",
    ),
    (
        "monitor-off-by-one-cycle",
        PARSE + "info/axi_monitor.cpp",
        "    if (cycle == 0) {\n        monitor.write",
        "    if (cycle <= 1) {\n        monitor.write",
    ),
    (
        "ltc-negative-errors-only",
        PARSE + "board/power_monitors.cpp",
        '    if (error != 0) {\n        reportLtcError("LTC2990", request, "current", error);',
        '    if (error < 0) {\n        reportLtcError("LTC2990", request, "current", error);',
    ),
    (
        "one-shot-as-console",
        PARSE + "dispatcher.cpp",
        "runLine(text, currentModeBit(), RunKind::kOneShot)",
        "runLine(text, currentModeBit(), RunKind::kConsole)",
    ),
    (
        "editor-one-backspace-short",
        PARSE + "line_editor.cpp",
        "print(kBackspace, behind + 1);",
        "print(kBackspace, behind);",
    ),
    (
        "table-misspelt-kwb",
        PARSE + "command_table.cpp",
        '"kwb [adr] [data]\\n"',
        '"kwb [adr] [date]\\n"',
    ),
    (
        "mcu-padded-byte",
        PARSE + "display/mcu.cpp",
        'printf(" 0x%x", value);\n    }\n}\n\nvoid readAndPrintBlock',
        'printf(" 0x%02x", value);\n    }\n}\n\nvoid readAndPrintBlock',
    ),
    (
        "table-lost-count-of-arws",
        PARSE + "command_table.cpp",
        '"arws [adr] [cnt]\\n"',
        '"arws [adr]\\n"',
    ),
    (
        "files-leaked-descriptor",
        PARSE + "files.cpp",
        "errno = EINVAL;\n        return closeKeepingErrno(descriptor);",
        "errno = EINVAL;\n        return -1;",
    ),
    (
        "dvo-swapped-names",
        PARSE + "display/display_modes.cpp",
        'showOutputMode("DVO", "dvo", channel)',
        'showOutputMode("dvo", "DVO", channel)',
    ),
    (
        "process-off-by-one-sensor",
        PARSE + "board/sensors.cpp",
        'printf("Sensor%d %s Process data: %d\\n", sensor, monitor.name',
        'printf("Sensor%d %s Process data: %d\\n", sensor + 1, monitor.name',
    ),
    (
        "table-swapped-words-of-rwbs",
        PARSE + "command_table.cpp",
        '"rwbs [adr] [cnt] [val]\\n"',
        '"rwbs [adr] [val] [cnt]\\n"',
    ),
    (
        "dump-repeats-its-first-line",
        PARSE + "hex_dump.cpp",
        "static_cast<std::uint64_t>(done), bytes + done, std::min",
        "static_cast<std::uint64_t>(done), bytes, std::min",
    ),
    (
        "memory-lost-repeat-of-runs",
        PARSE + "memory/memory_engine.cpp",
        "readRun<Item>(family, command.arguments, repeat, next)",
        "readRun<Item>(family, command.arguments, repeat & 0, next)",
    ),
    (
        "crtc-dropped-upper-case",
        PARSE + "display/display_modes.cpp",
        '    upperCase(first);\n    const std::string_view keyword = first;\n    if (keyword == "OUTPUT")',
        '    const std::string_view keyword = first;\n    if (keyword == "OUTPUT")',
    ),
    (
        "terminal-signals-too-early",
        PARSE + "terminal.cpp",
        "    const bool changed = change();\n    releaseSignals(before);\n    return changed;",
        "    releaseSignals(before);\n    return change();",
    ),
    (
        "table-inverted-aliases",
        PARSE + "command_table.cpp",
        "strchr(cmd.name, '/') != nullptr",
        "strchr(cmd.name, '/') == nullptr",
    ),
    (
        "memory-wrong-status-of-a-saved-run",
        PARSE + "memory/memory_engine.cpp",
        "    next = endOf(run, sizeof(Item));\n    return kStatusDone;\n}\n\ntemplate <typename Item>\n"
        "int readRunIntoOpenedFile",
        "    next = endOf(run, sizeof(Item));\n    return kStatusBadArgument;\n}\n\ntemplate <typename Item>\n"
        "int readRunIntoOpenedFile",
    ),
    (
        "mcu-refused-channel",
        PARSE + "display/mcu.cpp",
        'if (channel != "AUX" && channel != "I2C") {\n        return kStatusDone;',
        'if (channel != "AUX" && channel != "I2C") {\n        return kStatusBadArgument;',
    ),
    (
        "dispatcher-off-by-one-row",
        PARSE + "dispatcher.cpp",
        "last_index = row;",
        "last_index = row + 1;",
    ),
    (
        "load-lost-depth",
        PARSE + "console_commands.cpp",
        "    runPieces(file.text.get());\n    --loadDepth;\n",
        "    runPieces(file.text.get());\n",
    ),
    (
        "zoom-swapped-arguments",
        PARSE + "display/zoom_video.cpp",
        "vekZoomVideoInit(id, i2cChannel, i2cSa, layer)",
        "vekZoomVideoInit(id, i2cSa, i2cChannel, layer)",
    ),
    (
        "program-dropped-file-size-limit",
        "src/tovira_util_tool.cpp",
        "    signal(SIGXFSZ, SIG_IGN);\n",
        "",
    ),
    (
        "memory-wide-longs",
        PARSE + "memory/memory_engine.cpp",
        "return function(std::uint32_t{});",
        "return function(std::uint64_t{});",
    ),
    (
        "memory-runs-taken-for-items",
        PARSE + "memory/memory_engine.cpp",
        "    MemoryCommand command = parseMemoryCommand(family, cmdText, UpperCasing::kWholeText);\n"
        "    if (command.operation == 0 || command.isRun) {",
        "    MemoryCommand command = parseMemoryCommand(family, cmdText, UpperCasing::kWholeText);\n"
        "    if (command.operation == 0) {",
    ),
    (
        "spi-off-by-one-room",
        PARSE + "display/spi_flash.cpp",
        "(wholeWords(image.length)) > room)",
        "(wholeWords(image.length)) >= room)",
    ),
    (
        "usage-lost-full-stop",
        PARSE + "legacy/option_commands.cpp",
        'printf("%s usage.\\n", programName);',
        'printf("%s usage\\n", programName);',
    ),
    (
        "monitor-lost-base",
        PARSE + "info/axi_monitor.cpp",
        "vekRegWriteLong(base + offset, value)",
        "vekRegWriteLong(base * 0 + offset, value)",
    ),
]
