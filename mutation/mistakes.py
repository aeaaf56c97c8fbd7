"""Twenty small, plausible mistakes in src/, at or beside the lines that `pick 20261121` has chosen.

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
]
