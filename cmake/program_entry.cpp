// Where the hardened programs begin: the C library's own entry, which is reached by an indirect jump, has no landing pad.

extern "C" [[gnu::naked]] void startOnLandingPad()
{
    asm("jmp _start");
}
