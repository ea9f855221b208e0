/* The file as it is; a C array of it would take the compiler seconds. */
    .section .rodata, "a", %progbits
    .balign 16
    .global kHighlightLibrary
    .hidden kHighlightLibrary
kHighlightLibrary:
    .incbin KORVEX_HIGHLIGHT_LIBRARY
    .global kHighlightLibraryEnd
    .hidden kHighlightLibraryEnd
kHighlightLibraryEnd:

    .section .note.GNU-stack, "", %progbits
