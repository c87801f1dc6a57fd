// Before anything is drawn: light or dark as it was chosen the last time, else as the system has it.
"use strict";

(() => {
  try {
    const theme = localStorage.getItem("theme");
    if (theme === "light" || theme === "dark") document.documentElement.dataset.theme = theme;
  } catch {
    // A browser that keeps nothing shows what the system has.
  }
})();
