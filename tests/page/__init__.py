"""The page in a real browser: run by scripts/check_page.sh."""
