(function () {
  "use strict";
  const table = document.getElementById("results-table");
  const status = document.getElementById("sorted");
  if (!table || !status) return;
  const body = table.tBodies[0];
  const heads = Array.from(table.tHead.rows[0].cells);
  const collator = new Intl.Collator("en", { numeric: true, sensitivity: "base" });

  function key(row, column) {
    const cell = row.cells[column];
    if (cell.dataset.value !== undefined) return Number(cell.dataset.value);
    const text = cell.textContent.trim();
    return text === "–" ? null : text;
  }

  // Cells without a value stay at the end in both directions.
  function compare(a, b, direction) {
    if (a === null || b === null) return (a === null) - (b === null);
    if (typeof a === "number" && typeof b === "number") return direction * (a - b);
    return direction * collator.compare(String(a), String(b));
  }

  function sort(column) {
    const rising = heads[column].getAttribute("aria-sort") !== "ascending";
    const direction = rising ? 1 : -1;
    const rows = Array.from(body.rows, (row) => ({ row, key: key(row, column) }));
    rows.sort((a, b) => compare(a.key, b.key, direction));
    body.append(...rows.map((entry) => entry.row));
    heads.forEach((head, index) =>
      head.setAttribute("aria-sort", index !== column ? "none" : rising ? "ascending" : "descending"));
    const name = heads[column].textContent.trim();
    status.textContent = "Sorted by " + name + (rising ? ", ascending" : ", descending");
  }

  heads.forEach((head, column) =>
    head.querySelector("button").addEventListener("click", () => sort(column)));
})();
