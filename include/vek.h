/**
 * @file vek.h
 * The interface of the device-access library `libutil_vek.so`: every access of the console to a card.
 *
 * The library keeps one connection in a process, opened by vekRwOpen(), vekMemOpen() or vekSerialOpen(), so no function
 * takes a handle. It is called from one thread; vek_thread_qz202monitor() alone may run beside that thread.
 *
 * Conventions common to all functions, unless a function says otherwise:
 * - The result is 0 (or a value that is not negative) on success and negative on failure. A caller tests for "negative"
 *   only: another library behind the same names may use other codes than enum VekResult. The I2C, DDC, HDMI and
 *   DisplayPort functions answer 0 and nothing else on success, and a caller takes any other value as a failure.
 * - With no path open a function answers VEK_NO_PATH and touches nothing. Only what needs no card works then: the open
 *   functions, vekClose(), get_device_id(), doGetDeviceId(), vekI2cErrString(), vekPowerStateName(), dump_vram(),
 *   edid_print_helper(), and do_edid_parse() of a file.
 * - VEK_NOT_AVAILABLE: nothing behind the open path can do this. Outputs are left untouched.
 * - VEK_BAD_ARGUMENT: a number is out of its range or a pointer is null where the function needs one. Nothing has been
 *   done, outputs are left untouched.
 * - VEK_NO_RESPONSE: nothing claimed the access. As PCI Express answers an unsupported request, the result cell of a
 *   read then holds all ones; a write has no effect. Every other failure leaves the outputs as they were.
 * - VEK_NO_MEMORY: the host has no memory for what the function or the simulated card has to hold. Any function that
 *   reaches a card's memories or its flash may answer it; outputs are left untouched.
 * - With a card that keeps its state in a folder (docs/state-folder.md) any function that reaches the card may also
 *   answer VEK_TIMED_OUT, when another program has had the card to itself for 5 seconds, VEK_IO_ERROR, when a file of
 *   the folder has been cut short or the disk is full, from then on always, and VEK_BAD_DATA, when the file with the
 *   state has been damaged meanwhile. I2C transfers answer VEK_TIMED_OUT and AUX transactions VEK_IO_ERROR for all of
 *   these.
 * - The caller owns every buffer and text that it hands over, and the library does not keep them. Texts end with NUL.
 * - A byte is 8 bits, a word 16, a long 32, a quad 64; in memory and in files the low byte comes first.
 * - Functions that print do so with C stdio on standard output.
 */
#ifndef VEK_H
#define VEK_H

#include <stdint.h>  // NOLINT(modernize-deprecated-headers): this header serves C as well

/** How the card is reached, as get_s_type() reports it. */
enum AccessMode {
    VEK_ACCESS_DRIVER = 0, /**< the driver's device node, /dev/vekrw */
    VEK_ACCESS_MEM = 1,    /**< physical memory mapped through /dev/mem */
    VEK_ACCESS_SERIAL = 2  /**< a serial line to the board; all addresses are AMBA bus addresses */
};

/** Results of our library: negated errno values of Linux. */
enum VekResult {
    VEK_OK = 0,
    VEK_IO_ERROR = -5,       /**< a transfer, a file or a device node failed (EIO) */
    VEK_NO_RESPONSE = -6,    /**< no register, memory or device answered (ENXIO) */
    VEK_NO_MEMORY = -12,     /**< out of host memory (ENOMEM) */
    VEK_NO_PATH = -19,       /**< no connection is open (ENODEV) */
    VEK_BAD_ARGUMENT = -22,  /**< number out of range, null pointer, malformed text, no such channel (EINVAL) */
    VEK_PROTECTED = -30,     /**< write-protected (EROFS) */
    VEK_OUT_OF_RANGE = -34,  /**< the value asked for cannot be reached by the hardware (ERANGE) */
    VEK_NOT_AVAILABLE = -38, /**< nothing behind the open path can do this (ENOSYS) */
    VEK_NO_BUS = -44,        /**< the card has no I2C channel of that number (ECHRNG) */
    VEK_BAD_DATA = -74,      /**< the data came, but a checksum or a header is wrong (EBADMSG) */
    VEK_TIMED_OUT = -110,    /**< the device did not get ready in time (ETIMEDOUT) */
    VEK_NO_ACK_DATA = -121   /**< an I2C device did not acknowledge a byte after its address (EREMOTEIO) */
};

/** Device ids: the chip number read as hexadecimal. */
enum VekDeviceId { VEK_DEVICE_QZ201 = 0x201, VEK_DEVICE_QZ202 = 0x202 };

/** Sizes of the buffers that callers supply, in bytes, and of the SPI flash. */
enum VekSize {
    VEK_QUERY_REPORT_SIZE = 1024, /**< vekQueryInfo(), the terminating NUL included */
    VEK_EDID_BUFFER_SIZE = 512,   /**< vekDpAuxEdidGet(): four EDID blocks */
    VEK_SPI_FLASH_SIZE = 0x200000 /**< 2 MiB */
};

/** Items of vekQueryInt(). */
enum VekQueryItem { VEK_QUERY_CARD_COUNT = 8 };

/** Kinds of process monitor: standard, low and ultra-low threshold-voltage transistors. */
enum VekProcessMonitor { VEK_PROCESS_SVT = 2, VEK_PROCESS_LVT = 3, VEK_PROCESS_ULVT = 4 };

/** Power states. */
enum VekPowerState { VEK_POWER_PERFORMANCE = 0, VEK_POWER_SAVE = 1, VEK_POWER_STANDBY = 2 };

/** Clock domains; 1 is not in use. */
enum VekClockDomain {
    VEK_CLOCK_AXI = 0, /**< AXI and network on chip */
    VEK_CLOCK_APB = 2,
    VEK_CLOCK_PCIE = 3,
    VEK_CLOCK_VPU = 4, /**< video processor, and the PCIe mode clock */
    VEK_CLOCK_3D = 5,
    VEK_CLOCK_3D_SHADER = 6,
    VEK_CLOCK_2D = 7,
    VEK_CLOCK_DDR = 8
};

/** What vek_qz200_set_clk_mode() makes of a PLL or a core clock. */
enum VekClockMode { VEK_CLOCK_ON = 0, VEK_CLOCK_BYPASS = 1, VEK_CLOCK_OFF = 2 };

/** PLLs and core clocks that vek_qz200_set_clk_mode() switches. */
enum VekClockSource {
    VEK_CLOCK_SOURCE_DEVPLL = 1,  /**< AXI/NoC, AHB, APB */
    VEK_CLOCK_SOURCE_DEV2PLL = 2, /**< PCIe, VPU */
    VEK_CLOCK_SOURCE_GPUPLL = 3,  /**< 3D, 2D */
    VEK_CLOCK_SOURCE_GPU2PLL = 4, /**< 3D */
    VEK_CLOCK_SOURCE_3DCORE = 5,
    VEK_CLOCK_SOURCE_2DCORE = 6
};

/** Sync polarities in VekDisplayMode::flags, one bit each. */
enum VekSyncFlag {
    VEK_HSYNC_POSITIVE = 1 << 0,
    VEK_HSYNC_NEGATIVE = 1 << 1,
    VEK_VSYNC_POSITIVE = 1 << 2,
    VEK_VSYNC_NEGATIVE = 1 << 3
};

/** The timing that a display output runs at. */
struct VekDisplayMode {
    int32_t clock;    /**< pixel clock in kHz */
    int32_t hdisplay; /**< horizontal fields in pixels, from the first visible pixel of a line */
    int32_t hsync_start;
    int32_t hsync_end;
    int32_t htotal;
    int32_t vdisplay; /**< vertical fields in lines, from the first visible line of a frame */
    int32_t vsync_start;
    int32_t vsync_end;
    int32_t vtotal;
    int32_t flags; /**< enum VekSyncFlag; 0 when the polarities are not known */
};

/** Use of the card's video memory. */
struct gpu_info {
    int32_t reserved;
    int32_t used; /**< in MB, as are free and total */
    int32_t free;
    int32_t total;
};

#ifdef __cplusplus
extern "C" {
#endif

/* What is declared here stays visible in a library that hides all else. */
#pragma GCC visibility push(default)

/* ---- Connection ---------------------------------------------------------------------------------------------- */

/** Opens the driver device of a card, 0 to 3, and closes what was open. The first call fits the simulated cards: those
    of the description that the environment variable VEK_CARD_DESCRIPTION names (docs/card-description.md), unless the
    program runs with rights that its caller does not have, else the built-in ones.
    @return not negative, or VEK_NO_RESPONSE when that card does not exist; VEK_BAD_DATA when the description has a
    mistake, VEK_IO_ERROR when it or a file that it names cannot be read, VEK_NO_MEMORY, or VEK_NOT_AVAILABLE when the
    library that reads descriptions is missing, with a line on standard error. What was open stays open then, no card of
    a wrong description is fitted, and the next call reads it anew. Where the environment names a folder for the
    state of the cards (docs/state-folder.md), also VEK_PROTECTED when others have rights to it, VEK_BAD_DATA when what
    is in there is damaged or not of that card, VEK_IO_ERROR, VEK_NO_MEMORY or VEK_TIMED_OUT, with a line on standard
    error that names the file. */
int vekRwOpen(int card);

/** Maps the register region and the video memory through /dev/mem and closes what was open. Addresses are physical,
    sizes in bytes; a region of size 0 is left out and its family answers VEK_NOT_AVAILABLE. Every item is one access of
    its width where it is aligned. The chip is not known on this path: get_device_id() answers 0 until doGetDeviceId().
    The environment variable VEK_MEM_DEVICE names another device or file, unless the program runs with rights that its
    caller does not have.
    @return above 0 when open; VEK_BAD_ARGUMENT when both sizes are 0 or a region passes the end of the address range,
    VEK_NO_RESPONSE when a file is too short, VEK_IO_ERROR when it cannot be opened or mapped; what was open stays open
    then. */
int vekMemOpen(uint64_t reg_start, uint64_t reg_size, uint64_t vram_start, uint64_t vram_size);

/** Opens a serial line to the board, 8N1, greets the board (docs/serial-protocol.md), and closes what was open. The
    line is locked (flock() and TIOCEXCL) while it is open, and gets its settings back when it is closed.
    On this path the register functions and the video memory functions take addresses of the AMBA bus: the register
    region lies at 0x01000000, the first GiB of video memory at 0x40000000. Kernel memory, PCI configuration space and
    all that the kernel driver does answer VEK_NOT_AVAILABLE; what the board does not serve does, too.
    Beside its own results every function may answer VEK_TIMED_OUT when the board does not, VEK_IO_ERROR when the line
    is gone or the board has been restarted, or VEK_BAD_DATA when the board's answer makes no sense; whether a write has
    taken effect is not known then. A request is carried out at most once, however often the line makes the library
    send it. After three time-outs in a row, functions answer VEK_TIMED_OUT at once and the library looks for the board
    once a second. A run of longs that fails has moved the longs before the failure.
    @param path device node, "/dev/ttyUSB0"
    @param baud_rate 9600, 19200, 38400, 115200 or 460800
    @return above 0 when open; VEK_BAD_ARGUMENT for another rate or a null path, VEK_IO_ERROR when the device cannot be
    opened, is no terminal or is in use, VEK_TIMED_OUT when no board answers, VEK_BAD_DATA when what answers is none or
    speaks another version of the protocol; what was open stays open then. */
int vekSerialOpen(const char* path, int baud_rate);

/** Closes whatever connection is open; 0 too when none is. */
int vekClose(void);

/** @return enum AccessMode of the open connection, VEK_NO_PATH without one. */
int get_s_type(void);

/** @return the id set with doGetDeviceId(), else that of the connected chip (enum VekDeviceId), else 0. */
unsigned int get_device_id(void);

/** Sets the device id that the library assumes from now on.
    @param program_name opens the one line printed on standard error about an unknown type
    @param gpu_type "QZ201" or "QZ202", "201" or "202", "0x201" or "0x202", letters in either case; any other leaves the
    id as it is and answers VEK_BAD_ARGUMENT */
int doGetDeviceId(const char* program_name, const char* gpu_type);

/* ---- Card selection and queries ------------------------------------------------------------------------------ */

/** Makes another card the one that all functions work on; get_device_id() follows unless an id has been set. Each card
    keeps its state. @param card index from 0 to the number of cards less 1
    @return VEK_NO_RESPONSE when that card does not exist; the selected one stays then. VEK_NOT_AVAILABLE when the open
    path is not the driver's, which alone leads to several cards */
int vekSetCard(int card);

/** @return index of the selected card. */
int vekGetCard(void);

/** Reads one integer of the driver. @param item enum VekQueryItem; VEK_BAD_ARGUMENT for any other
    @param value receives it @param card card index; VEK_NO_RESPONSE when that card does not exist */
int vekQueryInt(int item, int* value, int card);

/** Fetches a text report of the driver, drawn from the selected card as it is now.
    @param keyword "" for everything, or in upper case one of
        ID         ids and revision, from PCI configuration space
        CARD       how many cards there are
        GOP        version of the UEFI driver and the mode that it has set, as the firmware has marked them
        AXI VPU 3D 2D DDR  what the clocks run at, in MHz, or that they are off
        3DCORE 2DCORE      how many cores there are
        VRAM       video memory in use, in per cent with one decimal and in MB
        BANDWIDTH  of video memory, from its clock and the width of its bus; width and speed of the PCI Express link
        LOAD       of each core, in per cent with one decimal
        CHANNEL    I2C channels and CRTCs; each output with its DDC channel, its CRTC and its display
    VEK_BAD_ARGUMENT for any other
    @param report VEK_QUERY_REPORT_SIZE bytes that receive complete lines and a NUL, on success only
    @return what the first item that cannot be read answers: the whole report fails with it, but for a display whose
    EDID cannot be read, which CHANNEL tells in its line; VEK_NO_MEMORY when there is none to put a report together */
int vekQueryInfo(const char* keyword, char* report);

/* ---- Register region ----------------------------------------------------------------------------------------- */

/* The card's memory-mapped registers, 16 MiB; over a serial line the addresses are those of the AMBA bus.
   Items may lie at any alignment and are little-endian. An item that is not wholly inside answers VEK_NO_RESPONSE. */

/** Reads the byte at a byte offset in the register region, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value receives 8 bits; all ones when nothing answers */
int vekRegReadByte(uint64_t address, uint8_t* value);

/** Reads the word at a byte offset in the register region, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value receives 16 bits; all ones when nothing answers */
int vekRegReadWord(uint64_t address, uint16_t* value);

/** Reads the long at a byte offset in the register region, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value receives 32 bits; all ones when nothing answers */
int vekRegReadLong(uint64_t address, uint32_t* value);

/** Reads the quad at a byte offset in the register region, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value receives 64 bits; all ones when nothing answers */
int vekRegReadQuad(uint64_t address, uint64_t* value);

/** Writes the byte at a byte offset in the register region, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value 8 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekRegWriteByte(uint64_t address, uint8_t value);

/** Writes the word at a byte offset in the register region, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value 16 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekRegWriteWord(uint64_t address, uint16_t value);

/** Writes the long at a byte offset in the register region, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value 32 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekRegWriteLong(uint64_t address, uint32_t value);

/** Writes the quad at a byte offset in the register region, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value 64 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekRegWriteQuad(uint64_t address, uint64_t value);

/* ---- Video memory -------------------------------------------------------------------------------------------- */

/* The card's own memory, from address 0 to its size.
   Items may lie at any alignment and are little-endian. An item that is not wholly inside answers VEK_NO_RESPONSE. */

/** Reads the byte at a byte address in video memory.
    @param address of its lowest byte @param value receives 8 bits; all ones when nothing answers */
int vekVramReadByte(uint64_t address, uint8_t* value);

/** Reads the word at a byte address in video memory.
    @param address of its lowest byte @param value receives 16 bits; all ones when nothing answers */
int vekVramReadWord(uint64_t address, uint16_t* value);

/** Reads the long at a byte address in video memory.
    @param address of its lowest byte @param value receives 32 bits; all ones when nothing answers */
int vekVramReadLong(uint64_t address, uint32_t* value);

/** Reads the quad at a byte address in video memory.
    @param address of its lowest byte @param value receives 64 bits; all ones when nothing answers */
int vekVramReadQuad(uint64_t address, uint64_t* value);

/** Writes the byte at a byte address in video memory.
    @param address of its lowest byte @param value 8 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekVramWriteByte(uint64_t address, uint8_t value);

/** Writes the word at a byte address in video memory.
    @param address of its lowest byte @param value 16 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekVramWriteWord(uint64_t address, uint16_t value);

/** Writes the long at a byte address in video memory.
    @param address of its lowest byte @param value 32 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekVramWriteLong(uint64_t address, uint32_t value);

/** Writes the quad at a byte address in video memory.
    @param address of its lowest byte @param value 64 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekVramWriteQuad(uint64_t address, uint64_t value);

/** Reads a run of longs of video memory into a buffer or into a file: exactly one of the two is given.
    @param buffer room for count longs, or null
    @param address byte address of the first long @param count number of longs, 0 or more; those outside of the memory
    read as all ones and make the result VEK_NO_RESPONSE
    @param file name of a file to create or replace (raw little-endian longs in address order, no header), or null
    @return VEK_IO_ERROR when the file cannot be created or written whole */
int vekMultiVramReadLong(uint32_t* buffer, uint64_t address, int count, const char* file);

/** Writes a run of longs of video memory: value over and over, or with a file name its longs (the format that
    vekMultiVramReadLong() writes; value is not looked at). A file that holds fewer than count longs is written as far
    as it reaches, whole longs only, and answers VEK_BAD_DATA; one that cannot be opened changes nothing.
    @param address byte address of the first long @param count number of longs, 0 or more; those outside of the memory
    are not written and make the result VEK_NO_RESPONSE @param file name, or null
    @return VEK_IO_ERROR when the file cannot be opened or read */
int vekMultVramWriteLong(uint32_t value, uint64_t address, int count, const char* file);

/** Prints a buffer as a dump, four longs a line: "%08lx:" with the address of the first, each long as " %08x", two
    blanks, then the line's bytes as ASCII between two '|', '.' for what is not printable. The ASCII column of a short
    last line is aligned with the others. Every line ends with a line end.
    @param buffer count longs @param item_size 4, else VEK_BAD_ARGUMENT
    @param address video memory address of the first long @param count number of longs; 0 prints nothing, below
    that answers VEK_BAD_ARGUMENT */
int dump_vram(const void* buffer, int item_size, uint64_t address, int count);

/** Prints the list of free video memory nodes: a heading, for each by rising address its number, its first and its last
    byte and its size, and the total. What the driver holds moves with the card: a frame buffer for each CRTC with a
    display, a capture buffer for each zoom-video port with a window, and buffers of the `func` switches that are on. */
int vekDumpVramFree(void);

/* ---- Kernel virtual memory ----------------------------------------------------------------------------------- */

/* The host's memory as its kernel sees it, reached through the driver.
   Items may lie at any alignment and are little-endian. An item that is not wholly inside answers VEK_NO_RESPONSE. */

/** Reads the byte at a kernel virtual address.
    @param address of its lowest byte @param value receives 8 bits; all ones when nothing answers */
int vekKmemReadByte(uint64_t address, uint8_t* value);

/** Reads the word at a kernel virtual address.
    @param address of its lowest byte @param value receives 16 bits; all ones when nothing answers */
int vekKmemReadWord(uint64_t address, uint16_t* value);

/** Reads the long at a kernel virtual address.
    @param address of its lowest byte @param value receives 32 bits; all ones when nothing answers */
int vekKmemReadLong(uint64_t address, uint32_t* value);

/** Reads the quad at a kernel virtual address.
    @param address of its lowest byte @param value receives 64 bits; all ones when nothing answers */
int vekKmemReadQuad(uint64_t address, uint64_t* value);

/** Writes the byte at a kernel virtual address.
    @param address of its lowest byte @param value 8 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekKmemWriteByte(uint64_t address, uint8_t value);

/** Writes the word at a kernel virtual address.
    @param address of its lowest byte @param value 16 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekKmemWriteWord(uint64_t address, uint16_t value);

/** Writes the long at a kernel virtual address.
    @param address of its lowest byte @param value 32 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekKmemWriteLong(uint64_t address, uint32_t value);

/** Writes the quad at a kernel virtual address.
    @param address of its lowest byte @param value 64 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekKmemWriteQuad(uint64_t address, uint64_t value);

/* ---- AMBA bus ------------------------------------------------------------------------------------------------ */

/* The card's internal AMBA bus: registers at 0x1000000; on the simulated card 1 MiB of board
   memory at 0x20000000 and the first GiB of video memory at 0x40000000 as well.
   Items may lie at any alignment and are little-endian. An item that is not wholly inside answers VEK_NO_RESPONSE. */

/** Reads the byte at a bus address, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value receives 8 bits; all ones when nothing answers */
int vekAmbaReadByte(uint64_t address, uint8_t* value);

/** Reads the word at a bus address, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value receives 16 bits; all ones when nothing answers */
int vekAmbaReadWord(uint64_t address, uint16_t* value);

/** Reads the long at a bus address, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value receives 32 bits; all ones when nothing answers */
int vekAmbaReadLong(uint64_t address, uint32_t* value);

/** Reads the quad at a bus address, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value receives 64 bits; all ones when nothing answers */
int vekAmbaReadQuad(uint64_t address, uint64_t* value);

/** Writes the byte at a bus address, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value 8 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekAmbaWriteByte(uint64_t address, uint8_t value);

/** Writes the word at a bus address, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value 16 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekAmbaWriteWord(uint64_t address, uint16_t value);

/** Writes the long at a bus address, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value 32 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekAmbaWriteLong(uint64_t address, uint32_t value);

/** Writes the quad at a bus address, in one access of exactly that width where it is aligned.
    @param address of its lowest byte @param value 64 bits @return VEK_NO_RESPONSE when nothing takes it */
int vekAmbaWriteQuad(uint64_t address, uint64_t value);

/* ---- CRTC registers and PCI configuration space -------------------------------------------------------------- */

/** Reads a register of display controller 0. @param index register number, 0 to 0xfff @param value receives it; all
   ones for any other index, which answers VEK_NO_RESPONSE */
int vekCrtcReadByte(uint32_t index, uint8_t* value);

/** Writes a register of display controller 0. @param index register number, 0 to 0xfff, else VEK_NO_RESPONSE */
int vekCrtcWriteByte(uint32_t index, uint8_t value);

/** Reads a double word of the selected card's PCI configuration space (function 0). @param offset byte offset, a
    multiple of 4 within the 4096 bytes of PCI Express; any other answers VEK_BAD_ARGUMENT
    @param value receives it; all ones where the offset is refused */
int vekPciRead(int32_t offset, uint32_t* value);

/** Writes a double word of PCI configuration space; read-only bits keep their value. The offset as in vekPciRead(). */
int vekPciWrite(int32_t offset, uint32_t value);

/* ---- I2C ----------------------------------------------------------------------------------------------------- */

/* The board's I2C channels, 0 to 3, as NXP UM10204 describes the bus. Both transfers answer VEK_NO_BUS for another
   channel, VEK_NO_RESPONSE when no device acknowledges the address, over a number of tries, VEK_NO_ACK_DATA when it
   does not acknowledge a byte after that, VEK_TIMED_OUT when the bus hangs. The bus is free again afterwards. */

/** Reads consecutive bytes of an I2C device. @param device 7-bit address @param sub_address register or memory address
    in the device, sent as one byte up to 0xff, as two (the high byte first) up to 0xffff; the device advances it, and
    what follows its last one is the device's affair @param count number of bytes, 0 to 65536; with 0 the sub-address is
    sent all the same @param data receives them on success and stays untouched on any failure; not looked at when count
    is 0 */
int vekI2cRead(int channel, uint32_t device, uint32_t sub_address, int count, uint8_t* data);

/** Writes consecutive bytes of an I2C device in one transaction; a memory may wrap them inside its page. The arguments
   as in vekI2cRead(). Returns when the device has taken the bytes: one that is busy with them then, as an EEPROM is,
   lets the next transfer try its address until it is not, up to 10 ms on a bus of 100 kHz. */
int vekI2cWrite(int channel, uint32_t device, uint32_t sub_address, int count, const uint8_t* data);

/** @return a text for a result of vekI2cRead() or vekI2cWrite(), another one for each; one for any other value, too;
    constant, never null. */
const char* vekI2cErrString(int error);

/* ---- DDC and EDID -------------------------------------------------------------------------------------------- */

/** Reads the EDID of the monitor on a DDC channel, extension blocks included (VESA E-EDID, E-DDC), 32 KiB at most.
    @param length receives the number of bytes, a multiple of 128
    @param data receives a pointer to them; they are the library's and stay valid until an EDID is next read with
   success
    @param valid receives 1 when the header and all checksums are right, else 0; a base block without the EDID header is
    delivered alone
    @return VEK_BAD_ARGUMENT when the selected card has no such channel, VEK_NO_RESPONSE when no monitor answers, else
   as vekI2cRead(); the outputs are set on success only */
int vekDDCRead(int channel, int* length, uint8_t** data, int* valid);

/** Prints an EDID decoded. @param length in bytes, at least 1; the first 32 KiB are looked at; what a short or damaged
    block lacks is left out, and what is wrong is listed at the end
    @param flag non-zero: the extension blocks too; 0: the base block only */
int edid_print_helper(const uint8_t* data, int length, int flag);

/** Decodes and prints an EDID file (the raw blocks, of which the first 32 KiB are looked at), or with a null path the
    EDID read last with success by vekDDCRead() or vekHdmiEDIDRead(): as edid_print_helper() prints it with the
   extension blocks. A failure is told in one line on standard error.
    @return VEK_IO_ERROR when the file cannot be read, VEK_BAD_DATA when it is empty, VEK_NOT_AVAILABLE when no EDID has
    been read yet */
int do_edid_parse(const char* path);

/* ---- HDMI ---------------------------------------------------------------------------------------------------- */

/* Outputs 0 and 1 on QZ201, 0 on QZ202; VEK_BAD_ARGUMENT for any other channel. The DDC of output n is DDC channel n.
 */

/** Makes the DDC master of an HDMI output ready: frees the bus from a transfer that was broken off. Reads and writes do
    not need it otherwise. @return VEK_TIMED_OUT when the bus stays blocked */
int vekHdmiDDCInit(int channel);

/** Reads a byte over an HDMI output's DDC. @param slave 7-bit address @param sub_address in the slave @return as
    vekI2cRead() */
int vekHdmiDDCRead(int channel, uint8_t slave, uint8_t sub_address, uint8_t* value);

/** Writes a byte over an HDMI output's DDC. @param slave 7-bit address @param sub_address in the slave @return as
    vekI2cWrite() */
int vekHdmiDDCWrite(int channel, uint8_t slave, uint8_t sub_address, uint8_t value);

/** Reads the EDID of an HDMI output's sink and prints it decoded, as do_edid_parse() then does with a null path.
    @return VEK_BAD_DATA, after printing, when its header or a checksum is wrong; else as vekDDCRead() */
int vekHdmiEDIDRead(int channel);

/** Reads the hot-plug state from the phy_status0 register. @param status receives 1 with a sink attached, else 0 */
int vekHdmiHpdSense(int channel, uint8_t* status);

/** Reads the timing that an HDMI output runs at: the preferred one of its sink's EDID. @return VEK_NO_RESPONSE without
    a sink, and when register 0x024 routes no display controller of the chip to the output, VEK_BAD_DATA when the EDID
    is damaged or has no timing; the record is set on success only */
int vekHdmiModeRead(int channel, struct VekDisplayMode* mode);

/* An HDMI PHY has 256 registers of 16 bits, at addresses 0x000 to 0x3fc in steps of 4:
     0x000  phy_ctrl: bit 0 configuration open, bit 1 reset when written as 1, bit 8 configured and locked (read-only)
     0x004  phy_status0, read-only: bit 0 hot-plug
     0x008  phy_id, read-only
     all others hold the configuration. Other addresses answer VEK_NO_RESPONSE. */

/** Opens the configuration of an HDMI PHY; vekHdmiPhyEnd() applies and closes it. */
int vekHdmiPhyStart(int channel);

/** Applies and closes the configuration of an HDMI PHY, open or not. @return VEK_TIMED_OUT when the PHY does not lock
 */
int vekHdmiPhyEnd(int channel);

/** Resets an HDMI PHY: its registers return to their defaults, its configuration is closed and not in effect. */
int vekHdmiPhyReset(int channel);

/** Reads a 16-bit register of an HDMI PHY. @param value receives it; all ones when nothing answers */
int vekHdmiPhyRead(int channel, uint32_t address, uint16_t* value);

/** Writes a 16-bit register of an HDMI PHY. @return VEK_PROTECTED for a read-only register, and for one of the
    configuration while that is not open */
int vekHdmiPhyWrite(int channel, uint32_t address, uint16_t value);

/* ---- DisplayPort and eDP ------------------------------------------------------------------------------------- */

/* Outputs: 0 and 1 on QZ201, where output 1 is the eDP; 0 on QZ202. Any other channel answers VEK_BAD_ARGUMENT in all
   vekDp functions and vekEdpSelfTestSet(). What goes over the AUX channel may answer VEK_NO_RESPONSE when the sink does
   not reply, VEK_TIMED_OUT when it defers for ever, VEK_IO_ERROR when it refuses a request; outputs are left untouched
   then, after VEK_NO_RESPONSE too.

   A DisplayPort PHY has 64 registers of 32 bits, at addresses 0x00 to 0xfc in steps of 4:
     0x00  phy_id, read-only
     0x04  phy_ctrl: bit 0 power, bit 1 reset when written as 1, bits 7:4 lanes that send, lane 0 in bit 4
     0x08  phy_status, read-only: bit 0 PLL locked, bit 1 hot-plug
     0x0c  phy_rate: link rate in units of 0.27 Gbit/s a lane, 0x06, 0x0a or 0x14
     0x10  phy_pattern: training pattern that is sent, 1 to 3, or 0 for none
     0x20  phy_drive0: voltage swing of lane 0 in bits 1:0, its pre-emphasis in bits 5:4; lanes 1 to 3 follow
     all others hold what is written.

   A DisplayPort controller has 256 registers of 16 bits, at addresses 0x000 to 0x1fe in steps of 2:
     0x000  ctl_id, read-only
     0x002  ctl_ctrl: bit 0 enable, bit 1 reset when written as 1, bit 2 main stream on
     0x004  ctl_status, read-only: bit 0 the controller has a link, bit 1 the main stream is sent
     0x006  ctl_rate: link rate as in phy_rate
     0x008  ctl_lanes: bits 4:0 lanes, 1, 2 or 4; bit 7 enhanced framing
     0x010  main stream attributes: Mvid, low and high word, Nvid, low and high word; from 0x018 on Htotal, Vtotal,
            Hstart, Vstart, HSP|HSW, VSP|VSW (bit 15: active low), Hwidth, Vheight, MISC0, MISC1
     all others hold what is written. */

/** Initialises an output: resets its PHY and its controller, switches the PHY's power on and enables the controller.
    There is no link afterwards. @param channel output index */
int vekDpInit(int channel);

/** Trains the main link after vekDpInit(): clock recovery, then channel equalisation, with the highest rate and the
    most lanes that the sink knows, then with less of them. The main stream stops.
    @return VEK_IO_ERROR when no rate and number of lanes can be trained, VEK_TIMED_OUT when the PHY's PLL does not
    lock, as before vekDpInit(), VEK_BAD_DATA when the sink's capabilities make no sense */
int vekDpLinkTraining(int channel);

/** Programs the controller's main stream attributes for the preferred timing of the sink's EDID, 8 bits a colour, and
    starts the stream. @return VEK_IO_ERROR when the link is not trained, VEK_BAD_DATA when the EDID is damaged or has
    no timing, VEK_OUT_OF_RANGE when the link is too slow for it; the controller stays as it was then */
int vekDpCTLCfg(int channel);

/** Reads the timing that a DisplayPort output runs at: the preferred one of its sink's EDID. @return VEK_NO_RESPONSE
    without a sink, and when register 0x024 routes no display controller of the chip to the output, VEK_BAD_DATA when
    the EDID is damaged or has no timing; the record is set on success only */
int vekDpModeRead(int channel, struct VekDisplayMode* mode);

/** Reads a byte of the sink's DPCD over the AUX channel. @param address 20-bit DPCD address; VEK_BAD_ARGUMENT beyond */
int vekDpAuxRead(int channel, uint32_t address, uint8_t* value);

/** Reads consecutive bytes of the sink's DPCD. @param address of the first; VEK_BAD_ARGUMENT when the bytes do not lie
    within 20 bits of address @param buffer receives count bytes, on success only @param count 0 or more; 0 does nothing
    @return VEK_NO_MEMORY when there is none to gather the bytes in; nothing has been read then */
int vekDpAuxReadBuf(int channel, uint32_t address, uint8_t* buffer, int count);

/** Writes a byte of the sink's DPCD over the AUX channel. @param address 20-bit DPCD address
    @return VEK_IO_ERROR when the sink refuses, as it does with a field that is read-only or that it does not have */
int vekDpAuxWrite(int channel, uint32_t address, uint8_t value);

/** Reads the sink's EDID through I2C over AUX: the base block and as many extensions as it declares. Nothing is checked
    beyond its header, so the bytes may be damaged.
    @param buffer VEK_EDID_BUFFER_SIZE bytes; longer EDID is cut there @param length receives the number of bytes */
int vekDpAuxEdidGet(int channel, uint8_t* buffer, int* length);

/** Reads a byte of an I2C device of the sink through I2C over AUX. @param device 7-bit address @return VEK_NO_RESPONSE
    when no device of that address answers, VEK_NO_ACK_DATA when it does not take the sub-address */
int vekDpI2cRead(int channel, uint32_t device, uint8_t sub_address, uint8_t* value);

/** Reads consecutive bytes of an I2C device of the sink. @param buffer receives count bytes, on success only
    @param count 0 to 65,536; 0 does nothing @return VEK_NO_MEMORY as vekDpAuxReadBuf() @see vekDpI2cRead() */
int vekDpI2cReadBuf(int channel, uint32_t device, uint8_t sub_address, uint8_t* buffer, int count);

/** Reads a 16-bit register of the controller's register block. @param address byte address of a register
    @param value receives it; all ones with VEK_NO_RESPONSE, which any other address answers */
int vekDpCdbRead(int channel, uint32_t address, uint16_t* value);

/** Writes a 16-bit register of the controller's register block. @param address byte address of a register;
    VEK_NO_RESPONSE for any other @return VEK_PROTECTED for a read-only register */
int vekDpCdbWrite(int channel, uint32_t address, uint16_t value);

/** Reads a 32-bit register of a DisplayPort PHY. @param address byte address of a register
    @param value receives it; all ones with VEK_NO_RESPONSE, which any other address answers */
int vekDpPhyRead(int channel, uint32_t address, uint32_t* value);

/** Writes a 32-bit register of a DisplayPort PHY. @param address byte address of a register; VEK_NO_RESPONSE for any
    other @return VEK_PROTECTED for a read-only register */
int vekDpPhyWrite(int channel, uint32_t address, uint32_t value);

/** Puts the frequency and the duty set by vekEdpPwmSet() and vekEdpLightSet() into effect, rounded to clocks of 27 MHz,
    and switches the backlight's PWM on. Until set, they are 1 kHz and 100 %.
    @return VEK_NOT_AVAILABLE, as vekEdpPwmSet() and vekEdpLightSet(), when the chip has no eDP */
int vekEdpEnablePwm(void);

/** Sets the frequency that the backlight's PWM takes with the next vekEdpEnablePwm().
    @param frequency_hz 200 to 1,000,000 */
int vekEdpPwmSet(int frequency_hz);

/** Sets the duty that the backlight's PWM takes with the next vekEdpEnablePwm(). @param percent 0 to 100 */
int vekEdpLightSet(int percent);

/** Switches the self-test picture of an eDP panel through its DPCD. @param state 0 off, 1 on
    @return VEK_NOT_AVAILABLE when the sink is no panel or has no such picture */
int vekEdpSelfTestSet(int channel, uint8_t state);

/* ---- Display modes and gamma --------------------------------------------------------------------------------- */

/* Register 0x024 of the register region routes the display controllers to the outputs, in a field of 4 bits an output:
     bits 3:0    HDMI-0     DDC channel 0
     bits 7:4    HDMI-1     DDC channel 1
     bits 11:8   DP-0       AUX channel 0
     bits 15:12  DP-1, eDP  AUX channel 1
     bits 19:16  VGA        DDC channel 3 on QZ201, 1 on QZ202
     bits 23:20  DVO        DDC channel 2 on QZ201
   Bit 3 of a field switches the output on, bits 2:0 name the controller that feeds it. Bits 31:24, and the fields of
   outputs that the chip lacks (on QZ202: HDMI-1, DP-1 and DVO), hold what is written and do nothing. */

/** Reads the timing that a display controller runs at: the preferred one of the EDID of the first output, in the order
    of register 0x024, that it feeds and that has a display attached.
    @param channel 0 to 3 on QZ201, 0 and 1 on QZ202; VEK_BAD_ARGUMENT for any other
    @param mode set on success only
    @return VEK_NO_RESPONSE when the controller feeds no output with a display, VEK_BAD_DATA when that EDID is damaged
    or has no timing */
int vekCrtcModeRead(int channel, struct VekDisplayMode* mode);

/** Prints register 0x024: its value, what each display controller of the chip feeds, which outputs are off, and which
    name a controller that the chip lacks. */
int vekCrtcOutputPrint(void);

/** Programs a display controller's gamma tables, 256 entries of 16 bits a colour, with
    65535 * brightness * white * (i / 255)^(1 / gamma): gamma 1 leaves the picture as it is, less makes its middle
    darker, 0 leaves full scale alone; the white of 6500 K is that of the display, other temperatures change it as a
    black body's colour changes (with gains in light to the power of 1 / 2.2, the largest of them 1). What comes up
    after power-on is the setting without any of the three.
    @param setting "id [ga R:G:B] [br B] [ct T]" with blanks, tabs or line ends between the words: the controller's
    number; gamma of red, green and blue, 0.0 to 1.0 each; brightness, 0.0 to 1.0; colour temperature in kelvin, 1000 to
    25100. The three may come in any order, the last of a kind counts, and what is not given takes 1.0:1.0:1.0, 1.0 and
    6500. Keywords may be in capitals. Numbers are plain decimals with a point, whatever the locale: digits, or digits,
    a point and digits; no sign, no exponent.
    @return VEK_BAD_ARGUMENT for any other text, and a null one: one line on standard error says why, and nothing has
    been changed */
int vekCrtcGammaSet(const char* setting);

/** Sets the VGA output's gain of each colour, in 255ths of full scale, which is what it comes up with.
    @return VEK_NOT_AVAILABLE when the chip has no VGA output */
int vekVgaSetGain(uint8_t red, uint8_t green, uint8_t blue);

/** Sets the VGA output's gain of one colour. @param colour 'R', 'G' or 'B'; VEK_BAD_ARGUMENT for any other
    @see vekVgaSetGain() */
int vekVgaSetSigleGain(int colour, uint8_t gain);

/* ---- Zoom video ---------------------------------------------------------------------------------------------- */

/* The registers of the two capture ports in the register region, those of port 1 in parentheses:
     0x100c0 (0x100d0)  32 bits  control: bit 0 the capture logic measures the incoming picture, bit 1 the window shows
     0x100cc (0x100dc)  16 bits  width of the incoming picture in pixels, read-only
     0x100ce (0x100de)  16 bits  height of the incoming picture in lines, read-only
     0x100e0 (0x10100)  32 bits  bit 31 set up, bit 0 layer, bit 1 I2C channel, bit 2 IICSA level
     0x100e4 (0x10104)  32 bits  x in bits 15:0, y in bits 31:16
     0x100e8 (0x10108)  32 bits  w in bits 15:0, h in bits 31:16
     0x100ec (0x1010c)  32 bits  columns cut from the left
     0x100f0 (0x10110)  32 bits  zoom exponents, horizontal in bits 1:0, vertical in bits 5:4
     0x100f4 (0x10114)  32 bits  bit 31 has been started, bit 0 CRTC that shows the window
   With bit 0 of the control register set, width and height turn from 0 to the size of the picture after one frame, 40
   ms at most, and are 0 without a picture, whether the port has been set up or not; cleared, they stay. */

/** Sets up a capture port and its SAA7111A decoder, which takes composite video from its input AI11. Any of the
    decoders may be named for either port, one of them for both as well.
    @param id port, 0 or 1, as in all vekZoomVideo functions; VEK_BAD_ARGUMENT for any other
    @param i2c_channel I2C controller of the decoder, 0 or 1 @param i2c_sa level of the decoder's IICSA pin, 0 or 1
    @param layer 0 hardware layer 1, 1 hardware layer 3
    @return VEK_NO_RESPONSE when no decoder answers there; the port stays as it was then */
int vekZoomVideoInit(int id, int i2c_channel, int i2c_sa, int layer);

/** Starts capture into a window. @param x, y position and w, h size of the window in pixels, from 0 and from 1 on; it
    has to end within 8192 by 8192 @param cut_left columns cut from the left of the picture, 0 to 1023
    @param zoomw, zoomh zoom factors 2^0 to 2^3 as their exponents, 0 to 3
    @param connector CRTC that shows the window, 0 or 1
    @return VEK_NO_RESPONSE before the port has been set up */
int vekZoomVideoStart(int id, int x, int y, int w, int h, int cut_left, int zoomw, int zoomh, int connector);

/** Stops capture and takes the window away; also when there is none. */
int vekZoomVideoStop(int id);

/** Starts capture again as it was last started. @return VEK_NO_RESPONSE when it never was */
int vekZoomVideoRestart(int id);

/** Reads a port's parameters: those of the last vekZoomVideoStart(), 0 before the first, and the size of the incoming
    picture in pixels as the port's registers show it. */
int vekZoomVideoGetParm(int id, int32_t* x, int32_t* y, int32_t* w, int32_t* h, int32_t* cut_left, int32_t* zoomw,
                        int32_t* zoomh, int32_t* connector, int32_t* camera_w, int32_t* camera_h);

/* ---- SPI flash ----------------------------------------------------------------------------------------------- */

/** Reads the SPI flash, a 16 Mbit serial NOR flash in the manner of the Winbond W25Q16.
    Common to the vekSpi functions: what a chip holds and how it is protected stays with it, whichever connection is
    open; VEK_NO_RESPONSE when no flash of VEK_SPI_FLASH_SIZE answers, VEK_TIMED_OUT when it stays busy.
    @param buffer receives size bytes @param address byte address @param size in bytes, 1 or more; the range must lie
    within VEK_SPI_FLASH_SIZE */
int vekSpiReadBuffer(void* buffer, int address, int size);

/** Erases every 4 KiB sector that the range touches to 0xff and nothing else, by 64 KiB blocks where whole ones lie
    among these sectors. @param address, size as in vekSpiReadBuffer()
    @return VEK_PROTECTED when a sector of them is write-protected, nothing has been erased then; VEK_BAD_DATA when one
    is not empty after its erase, those behind it are left as they were */
int vekSpiErase(int address, int size);

/** Programs the SPI flash; bits only go from 1 to 0, so erase first. Pages of 256 bytes that are all 0xff are not
    programmed, only compared. @param address, size as in vekSpiReadBuffer(); the size a multiple of 4
    @return VEK_PROTECTED when a page of them is write-protected, nothing has been programmed then; VEK_BAD_DATA when a
    page does not hold its bytes afterwards, as when it was not erased, those behind it are left as they were;
    VEK_NO_MEMORY when the simulated flash cannot hold a page, those before it are programmed then */
int vekSpiProgram(const void* buffer, int address, int size);

/** Write-protects the whole SPI flash, by the block-protect bits of its status register; the chip keeps this without
    power. @return VEK_PROTECTED when the chip does not let its status register be changed */
int vekSpiProtect(void);

/** Ends the write protection of the whole SPI flash. @see vekSpiProtect() */
int vekSpiUnprotect(void);

/* ---- On-chip sensors ----------------------------------------------------------------------------------------- */

/* The sensor unit lies at 0x30a000 in the register region (vek/drivers/sensors.h). Common to its functions:
   VEK_BAD_ARGUMENT for a site that the chip does not have, VEK_BAD_DATA for a reading that is not valid. */

/** Reads a die temperature, with steps of 1/16 of a degree between -60 and 195.94. It is that of the real die, also
    while vekThermalDebug() simulates one. @param sensor site 0, beside the graphics cores, or 1, apart from them
    @param celsius receives degrees Celsius */
int vekSensorTemp(int sensor, double* celsius);

/** Reads a supply voltage, with steps of 0.5 mV between 0 and 2.0475 V. @param sensor site 0, on the rail of the
    graphics cores, or 1, on that of all else @param volts receives volts */
int vekSensorVolt(int sensor, double* volts);

/** Reads a process monitor. @param kind enum VekProcessMonitor @param sensor 0 or 1 on QZ201, 0 on QZ202
    @param reading receives the count of its ring oscillator, 0 to 65535 */
int vekSensorProcess(int kind, int sensor, int* reading);

/* ---- Power monitor chips ------------------------------------------------------------------------------------- */

/** Reads the two currents of an LTC2990, (V1-V2)/Rsense1 and (V3-V4)/Rsense2, in steps of 19.42 uV over the resistor.
    Common to the LTC2990 and LTC2991 functions, which set the chip up for what they read:
    @param channel I2C channel, VEK_NO_BUS when the card has none of that number
    @param address_index strapped address: 0 to 3 stand for 0x98 to 0x9E (8-bit write form) on the LTC2990, 0 to 7 for
    0x90 to 0x9E on the LTC2991; VEK_BAD_ARGUMENT for any other
    @param rsense1, rsense2 sense resistors in milliohms; 0 answers VEK_BAD_ARGUMENT, outputs untouched
    @param current1, current2 receive amperes, negative ones when the current flows backwards
    @param repeated 0: one acquisition; 1: the chip goes on acquiring afterwards
    @param wait_ready 1: acquire anew and wait until all values asked for are there, 52 ms on an LTC2990 and 12 ms on an
    LTC2991; 0: take what the chip holds from an acquisition of the same kind, VEK_BAD_DATA when there is nothing yet
    or, of repeated ones, nothing new. An acquisition is on its way afterwards.
    @return VEK_NO_RESPONSE when no chip answers, VEK_TIMED_OUT when it does not get ready, VEK_BAD_DATA when a value is
    not marked as new; the results of vekI2cRead() */
int vekLTC2990GetCurrent2(int channel, int address_index, unsigned int rsense1, unsigned int rsense2, float* current1,
                          float* current2, int repeated, int wait_ready);

/** Reads the four single-ended voltages of an LTC2990, in volts, in steps of 305.18 uV. @see vekLTC2990GetCurrent2() */
int vekLTC2990GetVolt4(int channel, int address_index, float* v1, float* v2, float* v3, float* v4, int repeated,
                       int wait_ready);

/** Reads the four currents of an LTC2991 through the pairs V1-V2, V3-V4, V5-V6 and V7-V8, in amperes, in steps of
    19.075 uV over the resistor. @see vekLTC2990GetCurrent2() */
int vekLTC2991GetCurrent4(int channel, int address_index, unsigned int rsense1, unsigned int rsense2,
                          unsigned int rsense3, unsigned int rsense4, float* current1, float* current2, float* current3,
                          float* current4, int repeated, int wait_ready);

/** Reads the eight single-ended voltages of an LTC2991, in volts, in steps of 305.18 uV.
    @see vekLTC2990GetCurrent2() */
int vekLTC2991GetVolt8(int channel, int address_index, float* v1, float* v2, float* v3, float* v4, float* v5, float* v6,
                       float* v7, float* v8, int repeated, int wait_ready);

/** Reads the bus voltages of channels 1 and 2 of the INA3221 at 0x40 (7-bit) on an I2C channel, in millivolts, in steps
    of 8 mV. Both INA3221 functions set the chip up as after its power-on and wait for one round of conversions, 6.6 ms.
    @return VEK_NO_RESPONSE when no chip answers, VEK_BAD_DATA when it is another one by its ids, VEK_TIMED_OUT when it
    does not get ready; VEK_NO_BUS and the results of vekI2cRead() */
int vekINA3221GetVolt2(int channel, float* millivolts1, float* millivolts2);

/** Reads the currents of channels 1 and 2 of the INA3221 on an I2C channel, in amperes, in steps of 40 uV over the
    shunt. @param rsense1, rsense2 shunts in milliohms; 0 answers VEK_BAD_ARGUMENT, outputs untouched
    @see vekINA3221GetVolt2() */
int vekINA3221GetCurrent2(int channel, unsigned int rsense1, unsigned int rsense2, float* current1, float* current2);

/* ---- Power, fan, thermal, feature switches ------------------------------------------------------------------- */

/* The power unit, with the fan, lies at 0x30c000 in the register region (vek/drivers/power.h). */

/** Reads the power state. @param state receives enum VekPowerState
    @return VEK_BAD_DATA when the chip reports none of them */
int vekPowerGetState(int* state);

/** Sets the power state: performance runs the 3D, shader and 2D clocks at their full rate, save at half of it and with
    a lower voltage, standby stops them. vek_qz200_get_freq() tells the rates so; their settings stay as they are.
    @param state enum VekPowerState; any other answers VEK_BAD_ARGUMENT and changes nothing */
int vekPowerSetState(int state);

/** @return a printable name for any value of a power state; constant, never null. */
const char* vekPowerStateName(int state);

/** Sets the fan by hand or gives it back to the temperature regulation, which holds 20 percent up to 40 degrees
    Celsius, 100 percent from 90 degrees and rises evenly in between.
    @param rate percent of full PWM duty, 0 to 100; -1 automatic; any other answers VEK_BAD_ARGUMENT and changes
    nothing */
int vekFanSetRate(int rate);

/** Feeds a simulated die temperature to the fan regulation, which then sets the fan for it. The sensors go on reading
    the real die, so they show what the fan makes of it. A fan that is set by hand stays as it is.
    @param temperature in thousandths of a degree Celsius, -40000 to 150000; -1 ends the simulation; any other answers
    VEK_BAD_ARGUMENT and changes nothing */
int vekThermalDebug(int temperature);

/** Runs a `func` command: parses its text, switches the feature and prints the outcome. Words stand between blanks,
    commas and line ends and count in upper and lower case alike. The switches are kept by the card, at 0x30d000 in the
    register region (vek/drivers/feature_switches.h); a repeated command does the same again.

        func                          prints what can be chosen
        func 3d [name or number ...]  opens traces: 1 RVT_GL_TRACE, 2 RVT_GLX_TRACE, 3 RVT_ES_TRACE, 4 RVT_EGL_TRACE;
                                      alone it prints these
        func texture                  opens Texture
        func mgpu [mode]              chooses one mode of work on several GPUs, by name or number: 1 Combined,
                                      2 Independent with the number of GPUs behind it (1 to 4, else 1), 3 Balance; alone
                                      it prints these
        func on                       prints what is open
        func close                    closes everything

    @param text the whole command, command word first @param repeat 1 when an empty line repeats it
    @return VEK_BAD_ARGUMENT for a null pointer and for a word that it does not know, which it prints; what stands
    before that word is done */
int tovira_func(char* text, int repeat);

/* ---- Clocks -------------------------------------------------------------------------------------------------- */

/* The clock unit lies at 0x30b000 in the register region (vek/drivers/clocks.h). Every domain has a PLL of its own, on
   a crystal of 27 MHz. A PLL name of enum VekClockSource stands for the PLLs of these domains:
       DEVPLL   AXI, APB     GPUPLL   3D, 2D      3DCORE   3D, behind its PLL
       DEV2PLL  PCIe, VPU    GPU2PLL  3D shader   2DCORE   2D, behind its PLL
   and the DDR is on a PLL that cannot be switched. */

/** @return what a clock domain runs at, in MHz, rounded to the nearest, halves upwards; 0 when it is off;
    VEK_BAD_ARGUMENT for an unknown domain. @param domain enum VekClockDomain */
int vek_qz200_get_freq(int domain);

/** Computes the PLL setting that comes nearest to a frequency within the limits of the PLLs (vek/drivers/pll.h). Among
    equally near ones it takes that with the highest phase detector frequency, then that with the highest VCO frequency,
    for the lowest jitter. Every whole number of MHz in the range is reached exactly from 27 MHz.
    @param reference_khz of the crystal, 10000 to 100000; the cards have one of 27000, and vek_qz200_set_clk_freq()
    takes a setting as one for that
    @param mode 1, integer dividers; there is no other
    @param wanted_khz in kHz
    @param setting receives the setting, to be handed to vek_qz200_set_clk_freq() unread: bits 5:0 the divider before
    the phase detector (1 to 63), 19:8 the one in the feedback (16 to 4095), 30:24 the one behind the VCO (1 to 127),
    all others 0
    @return VEK_OUT_OF_RANGE when the frequency is not within 10000 to 2400000 or no setting comes within 0.5 percent */
int vek_qz200_pllcalc(int reference_khz, int mode, uint32_t wanted_khz, uint32_t* setting);

/** Sets the PLL of a clock domain. A domain that is in bypass or off takes it up when it is on again.
    @param domain enum VekClockDomain @param setting from vek_qz200_pllcalc()
    @return VEK_BAD_ARGUMENT: unknown domain, or not a setting; VEK_PROTECTED: PCIe or DDR, whose clocks the firmware
    trains its links for; VEK_OUT_OF_RANGE: the PLL would leave its limits; the clock stays as it was then */
int vek_qz200_set_clk_freq(int domain, uint32_t setting);

/** Switches a PLL or core clock. Its domains run at the rate that is set (on), at 27 MHz (bypass) or not at all (off);
    what reaches the 3D and 2D cores is then halved or stopped by the power state.
    A core has the last word over its PLL: in bypass it runs with the crystal also when the PLL is off.
    @param mode enum VekClockMode @param source enum VekClockSource; any other answers VEK_BAD_ARGUMENT */
int vek_qz200_set_clk_mode(int mode, int source);

/* ---- Version and information --------------------------------------------------------------------------------- */

/** Reads the four numbers of the kernel driver core's version; the first one is 1 or more. */
int vekRvtcoreVer(int* major, int* minor, int* third, int* fourth);

/** Reads the present use of the selected card's video memory, as vekDumpVramFree() lists it: used and free make up the
    total, and free is rounded down to whole MB. @param info receives it; the reserved field is set to 0 */
int vekInfoRead(struct gpu_info* info);

/* ---- AXI monitor --------------------------------------------------------------------------------------------- */

/* The AXI monitor lies in the register region, at 0x309000 on QZ201 and at 0x288800 on QZ202; on the other chip plain
   storage is there. It counts the transactions of each master on the AXI interconnect:
     0x000  32  control, written on QZ201: 1 start, 2 final, 4 clear
                written on QZ202: 0x14 start timer, 0 stop timer, 1 final, 2 clear
                read: bit 0 counts, bit 1 final
     0x004  32  latch: a write, whatever value, makes the registers below show the counts of this moment, on QZ202 those
                of the last span that has ended; final does so, too, on QZ202 after it has ended the span that runs,
                however short
     0x008  32  cycle, on QZ202: AXI clock cycles after which the timer begins to count anew; a write begins a span, 0
                stops the timer, which does not start then
     0x00c  32  number of masters, read-only as all below
     0x010  64  sequence: spans that have ended since the last clear, on QZ201 latches
     0x018  64  AXI clock cycles that the counts cover
     from 0x100 on in steps of 0x40, of each master
     0x00   64  reads
     0x08   64  writes
     0x10   64  bytes that they moved
     0x18   64  AXI clock cycles that they took, all added up
     0x20   32  who it is: kind in bits 7:0, number in bits 15:8 (vek/drivers/chip_units.h)
   Only longs at multiples of 4 are answered, and reads of quads at multiples of 8.

   The file "axiMonitorData" is text of comma-separated values, with the line "time,master,reads,writes,bytes,latency"
   at its head and then one line a master and sample: the time in UTC (2022-03-31T09:05:07.250Z), the master's name, the
   three counts, and how many AXI clock cycles a transaction took on average, with one decimal. It takes the place of a
   file that is there as a new one, with its heading from the first moment; what is there is left alone when it is a
   symbolic link, a regular file with several names or no regular file. It holds whole lines at any moment, but for the
   one in which the host runs out of room: lines that do not fit are taken away again, and end the collection. */

/** Collects the AXI transaction counts of a QZ201 run into the file "axiMonitorData" in the working directory: the
    counts since the last clear, ten times within a second, or fewer times when the run is over by then, once at least.
    The last lines of a run that is over hold its final counts.
    @return VEK_NOT_AVAILABLE when the selected card is no QZ201, VEK_IO_ERROR when the file cannot be written, else
    what the monitor's registers answer */
int vekMonitorAxiTrans_QZ201(void);

/** Thread entry: collects the AXI transaction counts of a QZ202 into "axiMonitorData" under a folder of the given name
    in the working directory until the thread is cancelled: ten times a second those of the last span that has ended, by
    the timer or by final, when it is a new one. It works on the card that is selected when it starts, whatever is
    selected or closed later. Deferred cancellation takes effect at once, and nothing stays open.
    @param folder_name 1 to 31 characters, not "." or ".." and without '/'; a folder that is not there is created. The
    text has to stay valid until the thread has ended
    @return null, at once when the name is not such a one, the selected card is no QZ202 or the file cannot be created,
    and when it cannot be written or the monitor's registers cannot be read any more */
void* vek_thread_qz202monitor(void* folder_name);

/* ---- Scripts ------------------------------------------------------------------------------------------------- */

/** Runs a script of register writes, reads, waits and checks; docs/script-format.md describes the format. The whole
    script is understood before anything of it runs.
    @param name file name
    @return 0 at its end; -2 for a null name, a file that cannot be read or a bad line, and VEK_IO_ERROR for an access
    or a check that failed, each with a line on standard error that names file and line */
int vekRunScript(const char* name);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
