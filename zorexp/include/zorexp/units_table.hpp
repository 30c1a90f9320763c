#pragma once
// The units table of the property system: variable and real-parameter types place their base
// unit in it by row (the quantity family) and column (one unit of that family).
// The entries are data: units_table.def.

struct VX_UnitEntry {
    int row;
    int col;
    const char* unit;       // unit text, as types write their base unit
    const char* quantity;   // the row's quantity family
};

// The entry at (row, col), or null when the table has none (always for 0/0, "no entry").
const VX_UnitEntry* VX_FindUnit(int row, int col);
