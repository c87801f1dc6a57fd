/*
 * What a line of tables.S stands for. Assembler.
 *
 * The tables hold offsets from the start of the image (IMAGE_BASE, given by the build), which hold
 * wherever the system loads the library. So what lies in .tables and .iat is never relocated.
 *
 * The linker script puts the parts together: .tables.1.* before .tables.2.*, and so on.
 */

/* A library that is bound at load; its functions follow, and then END_LIBRARY. */
.macro LIBRARY label, file
  .section .tables.1.directory, "a", %progbits
  .word lookups_\label - IMAGE_BASE
  .word 0, 0 /* not bound beforehand */
  .word file_\label - IMAGE_BASE
  .word addresses_\label - IMAGE_BASE
  .section .tables.4.names, "a", %progbits
file_\label:
  .asciz "\file"
  .balign 2
  .section .tables.2.lookups, "a", %progbits
lookups_\label:
  .section .iat, "aw", %progbits
addresses_\label:
.endm

.macro END_LIBRARY
  .section .tables.2.lookups
  .word 0
  .section .iat
  .word 0
.endm

/*
 * The function that callers see: it goes on to the address that the system put into the table.
 * BX, because the system's code may be Thumb code.
 */
.macro VENEER name, address
  .section .text.import.\name, "ax", %progbits
  .balign 4
  .global \name
  .type \name, %function
\name:
  ldr ip, [pc, #4]
  ldr ip, [ip]
  bx ip
  .word \address
  .size \name, . - \name
.endm

/* The label is what callers in the library call, when that is not the name. */
.macro IMPORT name, label=
  .section .tables.4.names
name_\name:
  .hword 0 /* where to look first: not known */
  .asciz "\name"
  .balign 2
  .section .tables.2.lookups
  .word name_\name - IMAGE_BASE
  .section .iat
address_\name:
  .word name_\name - IMAGE_BASE
  .ifb \label
  VENEER \name, address_\name
  .else
  VENEER \label, address_\name
  .endif
.endm

.macro IMPORT_ORDINAL name, ordinal
  .section .tables.2.lookups
  .word 0x80000000 + \ordinal
  .section .iat
address_\name:
  .word 0x80000000 + \ordinal
  VENEER \name, address_\name
.endm

/* The exports, in the order of their names (as bytes: the system searches by halves). */
.macro EXPORTS file
  .section .tables.3.exports, "a", %progbits
exports_directory:
  .word 0, 0, 0
  .word exports_file - IMAGE_BASE
  .word 1 /* the first ordinal */
  .word (exports_names - exports_addresses) / 4
  .word (exports_ordinals - exports_names) / 4
  .word exports_addresses - IMAGE_BASE
  .word exports_names - IMAGE_BASE
  .word exports_ordinals - IMAGE_BASE
  /* Each table grows in a subsection of its own. */
  .subsection 1
exports_addresses:
  .subsection 2
exports_names:
  .subsection 3
exports_ordinals:
  .subsection 4
exports_file:
  .asciz "\file"
  .set exports_count, 0
.endm

.macro EXPORT name, function
  .section .tables.3.exports
  .subsection 1
  .word \function - IMAGE_BASE
  .subsection 2
  .word 9f - IMAGE_BASE
  .subsection 3
  .hword exports_count
  .subsection 4
9:
  .asciz "\name"
  .set exports_count, exports_count + 1
.endm
