<?php http_response_code(404); exit; // What follows is JSON; this line keeps visitors from reading it. ?>
{
  "DRAFT-2026-DEMO": {
    "2026.1": [
      {
        "name": "Example Draft",
        "version": "2026.2",
        "url": "https://localhost:18443/buy/draft-2026-2"
      },
      {
        "name": "Example Model",
        "version": "2026.1",
        "url": "https://localhost:18443/buy/model-2026-1"
      },
      {
        "name": "Example Layout Studio",
        "version": "2026.1",
        "url": "https://localhost:18443/buy/layout-studio-2026-1"
      }
    ],
    "2026.2": []
  }
}
