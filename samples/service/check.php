<?php
// Tells applications that the service is reachable. get_updates.php says how to put the service up.
declare(strict_types=1);

if ($_SERVER['REQUEST_METHOD'] !== 'POST') {
    http_response_code(405);
    header('Allow: POST');
}
header('Content-Type: text/plain');
header('Content-Length: 1');
echo '1';
