// Ids of the library's resources, for the resource script, the code and the tests.
#pragma once

#define IDD_PRODUCT_UPGRADE 331
#define IDC_UPGRADE_HEADING 1021
#define IDC_UPGRADE_OFFERS 1031

// Handled like the cancel button. Every dialog has it, although nothing sends it.
#define ID_DIALOG_EXIT 16

#define IDI_LIBRARY 340

// Background pictures of the product lines.
#define IDB_BACKGROUND_332 332
#define IDB_BACKGROUND_333 333
#define IDB_BACKGROUND_335 335
#define IDB_BACKGROUND_343 343
#define IDB_BACKGROUND_1077 1077
